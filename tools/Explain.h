#pragma once

#include "Report.h"

namespace orvel::tools {

/// For every card and property the value, its source and, where it is not available, the reason; then what ended a vendor's
/// run, and the likely cause on this computer. A simulated machine must still be active.
std::string ExplainAsText(const Report& report, const TextStyle& style);

/// The same as one JSON object: `schema`, `machine`, `cards` (arrays of objects with `field`, `value`, `source`,
/// `available` and `reason`), `ended` (objects with `vendor`, `message`, `meaning` and `cause`, which is empty if no cause
/// is found).
std::string ExplainAsJson(const Report& report);

} // namespace orvel::tools
