#include "sources/SystemLibrary.h"

#include <string>

namespace orvel::shared::inventory {

namespace {

std::wstring SystemPath(const wchar_t* fileName)
{
    wchar_t folder[MAX_PATH];
    const UINT length = ::GetSystemDirectoryW(folder, MAX_PATH);
    return std::wstring(folder, length < MAX_PATH ? length : 0) + L'\\' + fileName;
}

} // namespace

enumeration::ModuleHandle LoadSystemLibrary(const wchar_t* fileName)
{
    HMODULE module = ::LoadLibraryExW(fileName, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (!module && ::GetLastError() == ERROR_INVALID_PARAMETER) {
        // Windows 7 does not know the flag without a later update.
        module = ::LoadLibraryExW(SystemPath(fileName).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    }
    return enumeration::ModuleHandle(module);
}

} // namespace orvel::shared::inventory
