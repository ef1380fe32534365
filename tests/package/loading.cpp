// loading PLUGIN: loads a plug-in by its full path with each set of flags. The source is the same for every ABI.

#include <stdio.h>

#include <windows.h>

#include <shellapi.h>

static void Print(const char* way, HMODULE plugin)
{
    if (plugin == nullptr) {
        printf("%s: error %lu\n", way, GetLastError());
        return;
    }
    printf("%s: loaded\n", way);
    FreeLibrary(plugin);
}

int main()
{
    int count = 0;
    wchar_t** const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    if (count < 2) {
        return 2;
    }
    Print("plain", LoadLibraryW(arguments[1]));
    Print("altered", LoadLibraryExW(arguments[1], nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
    Print("load folder",
          LoadLibraryExW(arguments[1], nullptr, LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS));
    return 0;
}
