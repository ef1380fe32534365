#pragma once

#include <cstdint>

#include "json/Json.h"

namespace orvel::shared::inventory {

struct Options {
    Depth depth = Depth::Drivers;
    uint32_t timeoutMilliseconds = 5000;
    bool isWakingAllowed = false;
};

/// Asks the sources of a depth, each on a thread of its own, and takes what has come within the limit. Those of depth
/// graphics start when the system's have answered, or half of the limit is over. The vendors' drivers start when SetupAPI
/// has listed the devices, unless a card of the vendor sleeps, or it is not known whether one does; with the option to wake
/// cards they do not wait. The threads of sources that answered have ended. A source that has not answered is abandoned: its
/// thread keeps the DLL loaded until it ends, and what it still reads is nobody's. Throws std::bad_alloc.
Findings TakeSnapshot(const Options& options);

} // namespace orvel::shared::inventory
