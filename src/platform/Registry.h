#pragma once

#include <windows.h>

#include "platform/Handles.h"

namespace orvel::shared::enumeration {

// Open a key for reading. They return Windows's status; `key` is null unless that is ERROR_SUCCESS.

inline LSTATUS OpenKey(HKEY parent, const char* path, RegistryKey& key)
{
    HKEY opened = nullptr;
    const LSTATUS status = ::RegOpenKeyExA(parent, path, 0, KEY_READ, &opened);
    key.reset(status == ERROR_SUCCESS ? opened : nullptr);
    return status;
}

inline LSTATUS OpenKey(HKEY parent, const wchar_t* path, RegistryKey& key)
{
    HKEY opened = nullptr;
    const LSTATUS status = ::RegOpenKeyExW(parent, path, 0, KEY_READ, &opened);
    key.reset(status == ERROR_SUCCESS ? opened : nullptr);
    return status;
}

} // namespace orvel::shared::enumeration
