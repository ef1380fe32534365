#pragma once

#include "Answers.h"

namespace orvel::recorder {

/// This computer as a machine file. COM must be initialised on this thread. The library is not needed.
/// With `keepIdentifiers`, serial numbers, UUIDs and user names stay as they are.
Json RecordComputer(bool keepIdentifiers);

} // namespace orvel::recorder
