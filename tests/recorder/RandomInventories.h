#pragma once

#include "support/SimulatedRun.h"

namespace orvel::tests {

/// A machine with random failures of what an inventory asks: the same for the same seed. It begins as `machine`.
Json WithRandomFailures(Json machine, uint32_t seed);

} // namespace orvel::tests
