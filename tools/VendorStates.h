#pragma once

#include <string>
#include <vector>

#include "Doctor.h"

namespace orvel::tools {

/// For each vendor, in the order of the enumeration, the first reason for missing records that the checks found, in the
/// order in which a vendor's run needs the dependencies. COM must be initialised.
std::vector<VendorState> StatesOfVendors(const std::vector<Check>& checks);

} // namespace orvel::tools
