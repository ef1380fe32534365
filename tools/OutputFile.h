#pragma once

#include <optional>
#include <string>

namespace orvel::tools {

/// Writes a file (UTF-8 path) atomically: an existing file keeps its content until the new one is complete.
/// Returns what went wrong, if anything.
std::optional<std::string> WriteFileWhole(const std::string& path, const std::string& content);

} // namespace orvel::tools
