#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/Handles.h"

namespace orvel::shared::enumeration {

/// A registry key that reads subkeys and texts on first use, and caches them.
class KnownKey {
public:
    /// The key at a path below HKEY_LOCAL_MACHINE. A key that cannot be opened is treated as empty.
    static KnownKey OfMachine(const wchar_t* path);

    explicit KnownKey(RegistryKey key) : key(std::move(key)) {}

    /// The subkey at `index` in the registry's order; null after the last. Owned by this key.
    KnownKey* Subkey(std::size_t index);

    /// A text value as UTF-8; "" when it is missing or longer than 255 bytes. Its registry type does not matter.
    const std::string& Text(const wchar_t* name);

private:
    bool ReadSubkey();

    RegistryKey key;
    std::vector<std::unique_ptr<KnownKey>> subkeys;
    bool hasAllSubkeys = false;
    std::map<std::wstring, std::string> texts;
};

} // namespace orvel::shared::enumeration
