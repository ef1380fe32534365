#pragma once

#include <optional>
#include <string>

#include "machine/Machine.h"

namespace orvel::simulation {

/// Redirects HKEY_LOCAL_MACHINE of this process to the machine's keys. Returns the reason of a failure.
std::optional<std::string> PutRegistryInPlace(const Machine& machine);

/// Ends the redirection, and deletes the scratch key.
void TakeRegistryAway();

/// Suspends and resumes the redirection, if there is one.
void PauseRegistry();
void ResumeRegistry();

} // namespace orvel::simulation
