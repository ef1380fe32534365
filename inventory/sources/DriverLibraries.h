#pragma once

#include "sources/DriverReading.h"

namespace orvel::shared::inventory {

// Each loads its vendor's library from the system folder, reads it, and releases it again. Where there is no library, the
// reading is `unavailable`. Any number of threads may read at once. May throw std::bad_alloc.

/// nvml.dll
DriverReading ReadNvml();

/// nvapi64.dll
DriverReading ReadNvapi();

/// amdadlx64.dll, with the help of atiadlxx.dll where that is there
DriverReading ReadAdlx();

} // namespace orvel::shared::inventory
