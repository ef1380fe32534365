#include "Libraries.h"

#include <vector>

#include <windows.h>

#include "LateBinding.h"

namespace orvel::tools {

namespace {

constexpr wchar_t libraryName[] = L"orvel-graphic-cards-enumeration.dll";

struct Origin {
    const char* Dll;
    const char* Brings;
};

constexpr Origin origins[] = {
    {"nvml.dll", "it comes with NVIDIA's display driver; a computer without one needs the substitute from the folder "
                 "\"fallback\" beside the program"},
    {"orvel-shared-wmi-client.dll", "it belongs beside orvel-graphic-cards-enumeration.dll"},
    {"orvel-graphic-cards-enumeration.dll", "it belongs beside this program"},
};

std::string WhatBrings(const std::string& dll)
{
    for (const Origin& origin : origins) {
        if (dll == origin.Dll) {
            return origin.Brings;
        }
    }
    return "it belongs to Windows";
}

/// Names of the DLLs that a mapped module imports when it is loaded.
std::vector<std::string> ImportsOf(HMODULE module)
{
    const auto* base = reinterpret_cast<const BYTE*>(module);
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const auto& directory = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    std::vector<std::string> names;
    if (directory.VirtualAddress == 0) {
        return names;
    }
    const auto* entry = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress);
    for (; entry->Name != 0; ++entry) {
        names.emplace_back(reinterpret_cast<const char*>(base + entry->Name));
    }
    return names;
}

/// The first DLL that keeps `dll` from being loaded: itself when its file is not found, else one that it imports.
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

bool IsFound(const wchar_t* dll)
{
    return ::LoadLibraryW(dll) != nullptr;
}

} // namespace

std::filesystem::path ProgramFolder()
{
    std::wstring path(32768, L'\0');
    path.resize(::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return std::filesystem::path(path).parent_path();
}

std::optional<std::string> LoadEnumerationLibrary()
{
    if (!IsFound(L"nvml.dll")) {
        ::LoadLibraryW((ProgramFolder() / "fallback" / "nvml.dll").c_str());
    }
    if (const HMODULE library = ::LoadLibraryW(libraryName)) {
        const char* missing = BindLate(library);
        return missing ? std::optional(std::string("orvel-graphic-cards-enumeration.dll lacks ") + missing +
                                       ": it belongs to another version of this program")
                       : std::nullopt;
    }
    const DWORD error = ::GetLastError();
    const std::string missing = FindMissing("orvel-graphic-cards-enumeration.dll");
    return missing + " cannot be loaded (error " + std::to_string(error) + "): " + WhatBrings(missing);
}

} // namespace orvel::tools
