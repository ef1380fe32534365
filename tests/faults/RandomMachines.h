#pragma once

#include <cstdint>

#include "support/SimulatedRun.h"

namespace orvel::tests {

/// A machine with odd but well-formed values; the same seed gives the same machine. It is the healthy workstation with many
/// places changed: empty and very long texts, texts of other scripts, all-zero and all-one numbers, values of a wrong type,
/// missing values, refused calls, interfaces that are not there, and many adapters.
Json RandomMachine(uint32_t seed);

} // namespace orvel::tests
