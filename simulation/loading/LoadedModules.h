#pragma once

#include <windows.h>

namespace orvel::simulation {

/// Lets the imports of `from` lead to `to`, in every module of the process that is not one of Windows' own, and in those
/// that are loaded later. One function at a time.
void LeadImports(FARPROC from, FARPROC to);

/// Lets them lead to `from` again. It looks at the modules that are there now: those of then may be gone.
void RestoreImports();

} // namespace orvel::simulation
