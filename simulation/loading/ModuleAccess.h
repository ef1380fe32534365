#pragma once

#include <string>

#include <windows.h>

namespace orvel::simulation {

/// orvel-simulation.dll itself.
HMODULE OwnModule();

/// The full path of a loaded module.
std::wstring PathOf(HMODULE module);

/// The folder of Windows' own DLLs, without a backslash at its end.
std::wstring SystemFolder();

/// An exported function, or null.
template <typename Function>
Function* FunctionIn(HMODULE module, const char* name)
{
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

/// A position in the image of a loaded module.
template <typename Content>
Content* At(HMODULE module, DWORD offset)
{
    return reinterpret_cast<Content*>(reinterpret_cast<BYTE*>(module) + offset);
}

/// What a directory of the image (IMAGE_DIRECTORY_ENTRY_…) begins with; null where the module has none.
template <typename Content>
const Content* DirectoryOf(HMODULE module, size_t entry)
{
    const auto headers = static_cast<DWORD>(At<IMAGE_DOS_HEADER>(module, 0)->e_lfanew);
    const DWORD offset = At<IMAGE_NT_HEADERS>(module, headers)->OptionalHeader.DataDirectory[entry].VirtualAddress;
    return offset == 0 ? nullptr : At<Content>(module, offset);
}

/// Writes into an image, even where the loader has made it read-only.
template <typename Content>
void Overwrite(Content* place, Content content)
{
    DWORD protection = 0;
    if (VirtualProtect(place, sizeof content, PAGE_READWRITE, &protection)) {
        *place = content;
        VirtualProtect(place, sizeof content, protection, &protection);
    }
}

} // namespace orvel::simulation
