#pragma once

#include <functional>

#include "Report.h"

namespace orvel::tools {

/// Runs the library once and copies its results. Calls `onLine` with each log line as it is written.
/// The library must be loaded, and COM initialised on this thread.
Report Enumerate(const std::function<void(const LogLine&)>& onLine);

} // namespace orvel::tools
