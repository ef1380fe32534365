#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "machine/Node.h"

namespace orvel::simulation {

/// REG_SZ, REG_DWORD or REG_BINARY.
using RegistryValue = std::variant<std::string, uint32_t, std::vector<uint8_t>>;

struct RegistryKeyModel {
    std::string path; // below HKEY_LOCAL_MACHINE
    std::vector<std::pair<std::string, RegistryValue>> values;
};

struct RegistryModel {
    std::vector<RegistryKeyModel> keys;
};

void ReadInto(const Node& node, RegistryModel& target);

} // namespace orvel::simulation
