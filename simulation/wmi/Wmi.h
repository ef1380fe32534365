#pragma once

#include <optional>
#include <string>

#include "machine/Machine.h"

namespace orvel::simulation {

/// Registers the simulated WMI in place of the computer's own for this process. Needs COM on the calling thread. Returns
/// what went wrong, if anything.
std::optional<std::string> PutWmiInPlace(const Machine& machine);

/// Leaves the computer's own WMI in its place again; objects that are still held stay usable.
void TakeWmiAway();

} // namespace orvel::simulation
