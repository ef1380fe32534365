#pragma once

#include <vector>

#include <windows.h>

namespace orvel::simulation {

/// An imported function, and what takes its place.
struct Redirection {
    FARPROC from;
    FARPROC to;
};

/// Lets imports lead elsewhere, in every module of the process that is not one of Windows' own, and in those that are loaded
/// later. Does nothing for a function that is redirected already.
void LeadImports(const std::vector<Redirection>& redirections);

/// Lets them lead back. It looks at the modules that are there now: those of then may be gone.
void RestoreImports(const std::vector<Redirection>& redirections);

/// A function as the loader has it.
template <typename Function>
FARPROC AsProcedure(Function* function)
{
    return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(function));
}

} // namespace orvel::simulation
