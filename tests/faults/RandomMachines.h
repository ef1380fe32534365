#pragma once

#include <cstdint>

#include "support/SimulatedRun.h"

namespace orvel::tests {

/// A machine with odd but well-formed values; the same seed creates the same machine. It is the healthy workstation with
/// many changes: empty and very long texts, texts in other scripts, all-zero and all-one numbers, values of a wrong type,
/// missing values, failing calls, missing interfaces, and many adapters.
Json RandomMachine(uint32_t seed);

} // namespace orvel::tests
