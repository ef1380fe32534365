#pragma once

#include <utility>
#include <vector>

#include <windows.h>

namespace orvel::simulation {

/// Imports of a loaded module that lead to a simulated DLL for a while. A program that is linked against the product has
/// bound its imports before any machine is in place.
class RedirectedImports {
public:
    /// Lets everything that `importer` imports from the DLL of this name lead to `target`, where that has it.
    void Redirect(HMODULE importer, const wchar_t* dllName, HMODULE target);

    /// Lets all imports lead where they led before.
    void Restore();

private:
    std::vector<std::pair<ULONG_PTR*, ULONG_PTR>> former;
};

/// Lets all imports of a module that lead to the function `from` lead to `to`.
void ReplaceImported(HMODULE importer, FARPROC from, FARPROC to);

} // namespace orvel::simulation
