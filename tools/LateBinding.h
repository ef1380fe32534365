#pragma once

#include <windows.h>

namespace orvel::tools {

/// Leads this program's calls of the enumeration library to `library`, the loaded DLL. To be called before the first of
/// them. Returns the first function that the DLL does not export, or null when all are there.
const char* BindLate(HMODULE library);

} // namespace orvel::tools
