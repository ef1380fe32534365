#pragma once

#include <string>
#include <vector>

#include "Doctor.h"

namespace orvel::tools {

/// Of each vendor, in the order of the enumeration, whether anything keeps its records away, as the checks have found it.
/// The first cause counts, from the library to what a vendor's run asks for last. COM must be initialised.
std::vector<VendorState> StatesOfVendors(const std::vector<Check>& checks);

} // namespace orvel::tools
