#pragma once

#include <vector>

#include "loading/LoadedModules.h"

namespace orvel::simulation {

/// The functions of user32.dll that read the display configuration, and what takes their place.
std::vector<Redirection> DisplayConfigRedirections();

} // namespace orvel::simulation
