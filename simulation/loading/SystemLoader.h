#pragma once

#include <vector>

#include "loading/LoadedModules.h"

namespace orvel::simulation {

/// LoadLibraryExW, and what takes its place: where a program loads an interface's DLL from Windows' own folder alone, it
/// gets the simulated one, or none where the machine has none.
std::vector<Redirection> SystemLoaderRedirections();

} // namespace orvel::simulation
