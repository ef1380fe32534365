#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "machine/Node.h"

namespace orvel::simulation {

/// A value of any type (REG_…).
struct RegistryBytes {
    uint32_t type = 0;
    std::vector<uint8_t> bytes;
};

/// A value that Windows refuses to read.
struct RegistryRefusal {
    int32_t status = 0;
};

/// REG_SZ, REG_DWORD, REG_BINARY, REG_QWORD, any type, or none.
using RegistryValue = std::variant<std::string, uint32_t, std::vector<uint8_t>, uint64_t, RegistryBytes, RegistryRefusal>;

struct RegistryKeyModel {
    std::string path; // below HKEY_LOCAL_MACHINE
    std::vector<std::pair<std::string, RegistryValue>> values;
};

struct RegistryModel {
    /// The key of a path, whatever its case; null where the file has none.
    const RegistryKeyModel* Find(const std::wstring& path) const;

    std::vector<RegistryKeyModel> keys;
};

void ReadInto(const Node& node, RegistryModel& target);

} // namespace orvel::simulation
