#pragma once

#include <optional>
#include <string>

namespace orvel::tools {

/// Loads the nvml.dll that the library will use. The substitute exports what the library imports, and forwards it to the
/// driver where possible. Returns why the substitute replaces an nvml.dll that was found; otherwise "".
std::string LoadNvml();

/// What came of loading the library.
struct LibraryLoad {
    std::optional<std::string> Problem; ///< what is missing, and what provides it, if the library was not loaded
    std::string Substituted; ///< why the substitute nvml.dll serves in place of one that was found; "" if it does not
};

/// Loads orvel-graphic-cards-enumeration.dll for the rest of the process. Where no nvml.dll is found, or an old one without
/// all the functions that the library imports, the substitute in the folder "fallback" beside this program takes its place.
LibraryLoad LoadEnumerationLibrary();

} // namespace orvel::tools
