#pragma once

#include <string>
#include <vector>

#include <windows.h>

#include "loading/LoadedModules.h"

namespace orvel::simulation {

/// Opens a key below HKEY_LOCAL_MACHINE for a caller of SetupAPI, and watches it from now on: what its caller reads is in
/// the trace, and a value that the machine file refuses is refused. Returns the error of Windows.
LSTATUS OpenDriverKey(const std::wstring& path, REGSAM access, HKEY& key);

/// The functions of the registry that watched keys are read with.
std::vector<Redirection> DriverKeyRedirections();

} // namespace orvel::simulation
