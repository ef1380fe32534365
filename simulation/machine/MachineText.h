#pragma once

#include <string>

#include "machine/Machine.h"

namespace orvel::simulation {

/// Reads a machine's JSON text. Throws MachineError with "line L, column C: REASON" for broken JSON and
/// "JSON PATH: REASON" for a key that occurs twice in one object or does not fit the format.
Machine ReadMachine(const std::string& text);

} // namespace orvel::simulation
