#pragma once

#include <utility>
#include <vector>

#include <windows.h>

namespace orvel::simulation {

/// Imports of a loaded module that are redirected to a simulated DLL. They are bound before any machine is in place when a
/// program is linked against the product.
class RedirectedImports {
public:
    /// Redirects everything that `importer` imports from the DLL of this name to `target`, if `target` exports it.
    void Redirect(HMODULE importer, const wchar_t* dllName, HMODULE target);

    /// Undoes all redirections.
    void Restore();

private:
    std::vector<std::pair<ULONG_PTR*, ULONG_PTR>> former;
};

/// Replaces the function `from` by `to` in all imports of a module.
void ReplaceImported(HMODULE importer, FARPROC from, FARPROC to);

} // namespace orvel::simulation
