#pragma once

#include "Report.h"

namespace orvel::tools {

/// For every card and property the value, where it comes from and, where it is not told, why; then in plain words what ended
/// a vendor's run, and what on this computer probably did. The machine that is simulated has to be in place still.
std::string ExplainAsText(const Report& report, const TextStyle& style);

/// The same as one JSON object: `schema`, `machine`, `cards` (arrays of objects with `field`, `value`, `source`, `told` and
/// `reason`), `ended` (objects with `message`, `meaning` and `cause`, which is
/// empty where nothing can be seen).
std::string ExplainAsJson(const Report& report);

} // namespace orvel::tools
