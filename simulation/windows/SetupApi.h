#pragma once

#include <vector>

#include "loading/LoadedModules.h"

namespace orvel::simulation {

/// The functions of setupapi.dll that list devices, and what takes their place.
std::vector<Redirection> SetupApiRedirections();

} // namespace orvel::simulation
