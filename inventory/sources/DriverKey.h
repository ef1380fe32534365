#pragma once

#include <windows.h>

#include "sources/SetupApi.h"

namespace orvel::shared::inventory {

/// Reads the values of an open driver key.
DriverKeyReading ReadDriverKey(HKEY key);

} // namespace orvel::shared::inventory
