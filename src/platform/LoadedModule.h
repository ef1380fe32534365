#pragma once

#include <windows.h>

namespace orvel::shared::enumeration {

/// The object at an offset from the start of a loaded module.
template <typename Structure>
Structure* At(HMODULE module, DWORD offset)
{
    return reinterpret_cast<Structure*>(reinterpret_cast<BYTE*>(module) + offset);
}

/// A data directory (IMAGE_DIRECTORY_ENTRY_…) of a loaded module; null when the module has none of that kind.
template <typename Structure>
Structure* DirectoryOf(HMODULE module, int entry)
{
    const auto headersAt = static_cast<DWORD>(At<IMAGE_DOS_HEADER>(module, 0)->e_lfanew);
    const DWORD offset = At<IMAGE_NT_HEADERS>(module, headersAt)->OptionalHeader.DataDirectory[entry].VirtualAddress;
    return offset == 0 ? nullptr : At<Structure>(module, offset);
}

} // namespace orvel::shared::enumeration
