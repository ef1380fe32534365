#pragma once

#include <windows.h>

namespace orvel::tools {

/// Leads the calls of late-bound functions to `library`, the loaded module that exports them. To be called before the first
/// of them. Returns the first function that the module does not export, or null when all are there; the others are bound.
const char* BindLate(HMODULE library);

} // namespace orvel::tools
