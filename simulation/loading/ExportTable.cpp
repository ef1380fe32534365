#include "loading/ExportTable.h"

#include <algorithm>
#include <cstring>

#include "loading/ModuleAccess.h"

// GetProcAddress searches the module's sorted table of names. A name is hidden by changing its last character in memory to
// one below all letters: no caller searches for the changed name, and the table stays sorted as long as no two of its names
// differ in the last character alone.

namespace orvel::simulation {

namespace {

constexpr char hiddenCharacter = '\x01';

std::vector<char*> NamesIn(HMODULE module)
{
    const auto* const exports = DirectoryOf<IMAGE_EXPORT_DIRECTORY>(module, IMAGE_DIRECTORY_ENTRY_EXPORT);
    std::vector<char*> names;
    for (DWORD index = 0; exports && index < exports->NumberOfNames; ++index) {
        names.push_back(At<char>(module, At<DWORD>(module, exports->AddressOfNames)[index]));
    }
    return names;
}

} // namespace

void HiddenExports::Hide(HMODULE module, const std::vector<std::string>& names)
{
    for (char* const name : NamesIn(module)) {
        if (std::ranges::find(names, name) == names.end()) {
            continue;
        }
        char* const last = name + std::strlen(name) - 1;
        changes.emplace_back(last, *last);
        Overwrite(last, hiddenCharacter);
    }
}

void HiddenExports::Restore()
{
    for (const auto& [place, original] : changes) {
        Overwrite(place, original);
    }
    changes.clear();
}

void HiddenExports::Forget()
{
    changes.clear();
}

std::vector<std::string> ExportedNames(HMODULE module)
{
    const auto names = NamesIn(module);
    return {names.begin(), names.end()};
}

} // namespace orvel::simulation
