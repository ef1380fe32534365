#pragma once

#include "sources/DriverReading.h"

namespace orvel::shared::inventory {

/// Initialises NVML, reads all of its devices, and shuts it down. NVML's values cannot be matched without their PCI
/// addresses: a driver without nvmlDeviceGetPciInfo_v3 is not asked for anything else. `isStopped` is false where NVML may
/// still run in its library, which must then stay loaded. May throw std::bad_alloc.
DriverReading ReadNvml(const FunctionLookup& find, bool& isStopped);

} // namespace orvel::shared::inventory
