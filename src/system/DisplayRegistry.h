#pragma once

#include <string>

#include "formulas/PnpDeviceId.h"
#include "system/AdapterRegistry.h"

namespace orvel::shared::enumeration {

/// Video BIOS version of an adapter, from its display driver's registry key; "" when there is none. Vendor and device
/// are compared case-sensitively with the driver's "MatchingDeviceId". `registry` caches the keys that the search reads.
///
/// The search goes depth first in the registry's order; the first matching driver key decides, even if it has no BIOS
/// string (the search for it then continues in the levels above). The limits are 32 levels and 16,384 keys.
std::string GetBiosString(const PnpDeviceId& adapter, AdapterRegistry& registry);

} // namespace orvel::shared::enumeration
