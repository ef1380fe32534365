#pragma once

#include <optional>
#include <string>

#include "machine/Machine.h"

namespace orvel::simulation {

/// Shows the process the machine's keys in place of the computer's HKEY_LOCAL_MACHINE. Returns what went wrong, if anything.
std::optional<std::string> PutRegistryInPlace(const Machine& machine);

/// Shows the computer's own keys again and deletes the scratch key.
void TakeRegistryAway();

/// Shows the computer's own keys for a while, if others are in place.
void PauseRegistry();
void ResumeRegistry();

} // namespace orvel::simulation
