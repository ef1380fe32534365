#include "loading/ExportTable.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

// GetProcAddress searches the module's sorted table of names. A name is hidden by changing its last character in memory to
// one below all letters: nobody asks for the changed name, and the table stays sorted as long as no two of its names differ
// in the last character alone.

namespace orvel::simulation {

namespace {

constexpr char HiddenCharacter = '\x01';

std::vector<char*> NamesIn(HMODULE module)
{
    auto* const base = reinterpret_cast<char*>(module);
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const auto& directory = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
    if (directory.VirtualAddress == 0) {
        return {};
    }
    const auto* const exports = reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(base + directory.VirtualAddress);
    const auto* const offsets = reinterpret_cast<const uint32_t*>(base + exports->AddressOfNames);
    std::vector<char*> names;
    for (DWORD index = 0; index < exports->NumberOfNames; ++index) {
        names.push_back(base + offsets[index]);
    }
    return names;
}

void Overwrite(char* place, char character)
{
    DWORD protection = 0;
    if (!VirtualProtect(place, 1, PAGE_READWRITE, &protection)) {
        return;
    }
    *place = character;
    VirtualProtect(place, 1, protection, &protection);
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
        Overwrite(last, HiddenCharacter);
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
