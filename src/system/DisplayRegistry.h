#pragma once

#include <string>

#include "formulas/PnpDeviceId.h"
#include "system/AdapterRegistry.h"

namespace orvel::shared::enumeration {

/// Video BIOS version of an adapter, from its display driver's registry key; "" when there is none. Vendor and device
/// are compared with the driver's "MatchingDeviceId" as they are, upper and lower case apart. What the search reads of the
/// registry is kept in `registry`.
///
/// The search goes depth first in the registry's order; the first matching driver key decides, even when it has no BIOS
/// string (a text that is then sought on, level by level upwards). It ends 32 levels deep, and after 16,384 keys.
std::string GetBiosString(const PnpDeviceId& adapter, AdapterRegistry& registry);

} // namespace orvel::shared::enumeration
