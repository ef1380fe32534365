#pragma once

#include <optional>
#include <string>

#include "machine/Machine.h"

namespace orvel::simulation {

/// Registers the simulated WMI in place of the computer's own for this process. COM must be initialised on the
/// calling thread. Returns the reason of a failure.
std::optional<std::string> PutWmiInPlace(const Machine& machine);

/// Restores the computer's own WMI; objects that callers still hold stay usable.
void TakeWmiAway();

} // namespace orvel::simulation
