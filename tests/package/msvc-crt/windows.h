#pragma once

// The part of the Windows interface that the test hosts use, for clang in MSVC's ABI. The real headers are part of the SDK.

#include <stddef.h>

typedef void* HANDLE;
typedef struct HINSTANCE__* HMODULE;
typedef unsigned long DWORD;
typedef void* LPVOID;

#define WINAPI __stdcall
#define CP_UTF8 65001U
#define INFINITE 0xFFFFFFFFUL
#define LOAD_WITH_ALTERED_SEARCH_PATH 0x8UL
#define LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR 0x100UL
#define LOAD_LIBRARY_SEARCH_DEFAULT_DIRS 0x1000UL

extern "C" {
__declspec(dllimport) int CloseHandle(HANDLE handle);
__declspec(dllimport) HANDLE
    CreateThread(void* security, size_t stack, DWORD (*function)(LPVOID), LPVOID argument, DWORD flags, DWORD* id);
__declspec(dllimport) int FreeLibrary(HMODULE module);
__declspec(dllimport) wchar_t* GetCommandLineW();
__declspec(dllimport) DWORD GetLastError();
__declspec(dllimport) void* GetProcAddress(HMODULE module, const char* name);
__declspec(dllimport) HMODULE LoadLibraryExW(const wchar_t* path, HANDLE file, DWORD flags);
__declspec(dllimport) HMODULE LoadLibraryW(const wchar_t* path);
__declspec(dllimport) void* LocalFree(void* memory);
__declspec(dllimport) int SetConsoleOutputCP(unsigned int codePage);
__declspec(dllimport) DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds);
__declspec(dllimport) int WideCharToMultiByte(unsigned int codePage, DWORD flags, const wchar_t* text, int length,
                                              char* bytes, int size, const char* unknown, int* usedUnknown);
}
