#include "loading/ModuleAccess.h"

namespace orvel::simulation {

namespace {

constexpr DWORD pathLength = 4096; // characters

} // namespace

HMODULE OwnModule()
{
    HMODULE self = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&OwnModule), &self);
    return self;
}

std::wstring PathOf(HMODULE module)
{
    std::wstring path(pathLength, L'\0');
    path.resize(GetModuleFileNameW(module, path.data(), pathLength));
    return path;
}

std::wstring SystemFolder()
{
    std::wstring folder(pathLength, L'\0');
    folder.resize(GetSystemDirectoryW(folder.data(), pathLength));
    return folder;
}

} // namespace orvel::simulation
