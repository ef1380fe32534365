#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace orvel::tools {

/// Folder of this program.
std::filesystem::path ProgramFolder();

/// Loads orvel-graphic-cards-enumeration.dll for the rest of the process. Where no nvml.dll is found, the substitute in the
/// folder "fallback" beside this program takes its place. Returns what is missing, and what brings it, when that fails.
std::optional<std::string> LoadEnumerationLibrary();

} // namespace orvel::tools
