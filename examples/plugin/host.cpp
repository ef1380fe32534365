// Loads the plug-in from the folder "plugin" beside this program and calls it.

#include <stdio.h>

#include <windows.h>

#include <objbase.h>

// Without the two flags, Windows searches the program's folder for the plug-in's DLLs, and the call fails with error 126.
static HMODULE LoadPlugin()
{
    wchar_t path[MAX_PATH + 32];
    DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH);
    while (length > 0 && path[length - 1] != L'\\') {
        --length;
    }
    lstrcpyW(path + length, L"plugin\\graphics-plugin.dll");
    return LoadLibraryExW(path, nullptr, LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
}

int main()
{
    const HMODULE plugin = LoadPlugin();
    if (plugin == nullptr) {
        printf("the plug-in cannot be loaded: error %lu\n", GetLastError());
        return 1;
    }
    using Function = int();
    const auto countCards = reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(plugin, "CountCards")));
    if (countCards == nullptr || FAILED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) {
        return 1;
    }
    printf("%d cards\n", countCards());
    CoUninitialize();
    FreeLibrary(plugin);
    return 0;
}
