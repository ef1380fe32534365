#pragma once

#include <cstdint>
#include <functional>

#include "Answers.h"

namespace orvel::recorder {

struct RecordOptions {
    bool KeepIdentifiers = false;           ///< serial numbers, UUIDs, user names and names of monitors stay as they are
    uint32_t PatienceMilliseconds = 20'000; ///< a driver that makes no progress for so long hangs
    std::function<void()> BeforeEnumeration = [] {}; ///< what a host does before it enumerates; an inventory needs none
};

/// This computer as a machine file. COM must be initialised on this thread. The library is not needed.
Json RecordComputer(const RecordOptions& options);

} // namespace orvel::recorder
