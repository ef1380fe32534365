#pragma once

#include <cstdint>
#include <string>

namespace orvel::shared::enumeration {

// Names of the codes that Windows reports. A code without a name throws std::out_of_range
// ("invalid unordered_map<K, T> key"): there is intentionally no name for unknown codes.

/// Name of a WMI `Availability` code (1 to 21).
const std::string& AvailabilityName(uint32_t code);

/// Name of a WMI `ConfigManagerErrorCode` (0 to 31).
const std::string& ConfigErrorName(int32_t code);

/// Name of an SMBIOS memory type (1 to 31 without 12 and 21 to 23).
const std::string& MemoryTypeName(uint32_t code);

/// The same, but "" for a type without a name.
std::string MemoryTypeNameOrEmpty(uint32_t code);

} // namespace orvel::shared::enumeration
