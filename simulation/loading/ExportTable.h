#pragma once

#include <string>
#include <utility>
#include <vector>

#include <windows.h>

namespace orvel::simulation {

/// Names that GetProcAddress does not find in a loaded module, although the module exports them.
class HiddenExports {
public:
    /// Hides these names of the module, in addition to those that are hidden already.
    void Hide(HMODULE module, const std::vector<std::string>& names);

    /// Makes all hidden names visible again; the module must still be loaded.
    void Restore();

    /// Discards the changes without restoring them, for a module that is no longer loaded.
    void Forget();

private:
    std::vector<std::pair<char*, char>> changes; // position in the export table, original character
};

/// The names of all functions that the module exports.
std::vector<std::string> ExportedNames(HMODULE module);

} // namespace orvel::simulation
