#pragma once

#include "Report.h"
#include "inventory/Comparison.h"

namespace orvel::tools {

/// The results of an enumeration, for the comparison. A simulated machine must still be active: the likely causes of what
/// ended a vendor's run are looked for on this computer.
Records RecordsOf(const Report& report);

} // namespace orvel::tools
