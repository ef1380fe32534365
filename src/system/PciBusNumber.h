#pragma once

#include <cstdint>
#include <string>

#include "formulas/PnpDeviceId.h"
#include "system/AdapterRegistry.h"

namespace orvel::shared::enumeration {

/// PCI bus number of an adapter, from the registry's Plug and Play keys; 0 when the adapter is not found there. Vendor
/// and device must be in upper case, as in the registry.
///
/// The first device key whose first instance has a "LocationInformation" decides, so two equal adapters get the same number.
/// Throws std::invalid_argument ("invalid stoi argument") when that text contains no location, and std::out_of_range ("stoi
/// argument out of range") when its bus is too large a number.
/// `registry` caches the names of the device keys.
int32_t GetBusIdFromRegistry(const PnpDeviceId& adapter, AdapterRegistry& registry);

/// The same without a cache.
int32_t GetBusIdFromRegistry(const std::string& vendorId, const std::string& deviceId);

} // namespace orvel::shared::enumeration
