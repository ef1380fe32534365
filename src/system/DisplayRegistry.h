#pragma once

#include <string>

#include "system/AdapterRegistry.h"

namespace orvel::shared::enumeration {

/// Video BIOS version of an adapter, from its display driver's registry key; "" when there is none. The identifiers are
/// texts of 4 hexadecimal digits and are compared with the driver's "MatchingDeviceId" as they stand, upper and lower case
/// apart. What the search reads of the registry is kept in `registry`.
///
/// The search goes depth first in the registry's order; the first matching driver key decides, even when it has no BIOS
/// string (a text that is then sought on, level by level upwards). It ends 32 levels deep, and after 16,384 keys.
std::string GetBiosString(const std::string& vendorId, const std::string& deviceId, AdapterRegistry& registry);

/// The same with a registry that is read for this search alone.
std::string GetBiosString(const std::string& vendorId, const std::string& deviceId);

} // namespace orvel::shared::enumeration
