#pragma once

#include <functional>

#include "Report.h"

namespace orvel::tools {

/// Runs the library once and takes over all that it tells. `onLine` is called with each log line as it happens.
/// The library must be loaded, and COM initialised on this thread.
Report Enumerate(const std::function<void(const LogLine&)>& onLine);

} // namespace orvel::tools
