#pragma once

#include "sources/DriverReading.h"

namespace orvel::shared::inventory {

/// Returns NVAPI's function of an id; null where the installed driver lacks it.
using NvapiLookup = std::function<void*(uint32_t id)>;

/// Initialises NVAPI, reads all of its physical GPUs, also those that only compute, and unloads it. `isStopped` is false
/// where NVAPI may still run in its library, which must then stay loaded. May throw std::bad_alloc.
DriverReading ReadNvapi(const NvapiLookup& find, bool& isStopped);

} // namespace orvel::shared::inventory
