#include "Libraries.h"

#include <vector>

#include <windows.h>

#include "LateBinding.h"
#include "MachineFiles.h"
#include "platform/Handles.h"
#include "platform/LoadedModule.h"

namespace orvel::tools {

namespace {

using namespace shared::enumeration;

constexpr wchar_t libraryName[] = L"orvel-graphic-cards-enumeration.dll";

struct Origin {
    const char* Dll;
    const char* Advice;
};

constexpr Origin origins[] = {
    {"nvml.dll", "provided by NVIDIA's display driver; without the driver, copy the substitute from the folder "
                 "\"fallback\" beside the program"},
    {"orvel-shared-wmi-client.dll", "it must be beside orvel-graphic-cards-enumeration.dll"},
    {"orvel-graphic-cards-enumeration.dll", "it must be beside this program"},
};

std::string AdviceFor(const std::string& dll)
{
    for (const Origin& origin : origins) {
        if (dll == origin.Dll) {
            return origin.Advice;
        }
    }
    return "provided by Windows";
}

/// Names of the DLLs that a mapped module imports when it is loaded.
std::vector<std::string> ImportsOf(HMODULE module)
{
    std::vector<std::string> names;
    const auto* entry = DirectoryOf<IMAGE_IMPORT_DESCRIPTOR>(module, IMAGE_DIRECTORY_ENTRY_IMPORT);
    for (; entry && entry->Name != 0; ++entry) {
        names.emplace_back(At<const char>(module, entry->Name));
    }
    return names;
}

/// The first DLL that cannot be loaded: `dll` itself if its file is missing, otherwise one that it imports.
std::string FindMissing(const std::string& dll)
{
    const HMODULE mapped = ::LoadLibraryExA(dll.c_str(), nullptr, DONT_RESOLVE_DLL_REFERENCES);
    if (!mapped) {
        return dll;
    }
    for (const std::string& import : ImportsOf(mapped)) {
        if (!::LoadLibraryA(import.c_str())) {
            return FindMissing(import);
        }
    }
    return dll;
}

/// The first function that `module` exports and `other` lacks; "" if `other` has them all.
std::string FirstLacking(HMODULE module, HMODULE other)
{
    const auto* exports = DirectoryOf<IMAGE_EXPORT_DIRECTORY>(module, IMAGE_DIRECTORY_ENTRY_EXPORT);
    const auto* names = exports ? At<const DWORD>(module, exports->AddressOfNames) : nullptr;
    for (DWORD index = 0; names && index < exports->NumberOfNames; ++index) {
        const char* name = At<const char>(module, names[index]);
        if (!::GetProcAddress(other, name)) {
            return name;
        }
    }
    return {};
}

} // namespace

std::string LoadNvml()
{
    const HMODULE found = ::LoadLibraryW(L"nvml.dll");
    const HMODULE substitute = ::LoadLibraryW((ProgramFolder() / "fallback" / "nvml.dll").c_str());
    if (!found || !substitute) {
        return {};
    }
    const std::string lacking = FirstLacking(substitute, found);
    ::FreeLibrary(lacking.empty() ? substitute : found);
    return lacking.empty() ? "" : "the one found is older and lacks " + lacking + "; using the substitute";
}

LibraryLoad LoadEnumerationLibrary()
{
    const std::string substituted = LoadNvml();
    if (const HMODULE library = ::LoadLibraryW(libraryName)) {
        const char* missing = BindLate(library);
        return {missing ? std::optional(std::string("orvel-graphic-cards-enumeration.dll lacks ") + missing +
                                        ": its version does not match this program")
                        : std::nullopt,
                substituted};
    }
    const DWORD error = ::GetLastError();
    const std::string missing = FindMissing("orvel-graphic-cards-enumeration.dll");
    return {missing + " cannot be loaded (error " + std::to_string(error) + "): " + AdviceFor(missing), substituted};
}

} // namespace orvel::tools
