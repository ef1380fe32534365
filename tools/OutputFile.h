#pragma once

#include <optional>
#include <string>

namespace orvel::tools {

/// What happens to a file that has the name already.
enum class Existing { Replaced, Kept };

/// Writes a file (UTF-8 path) atomically: an existing file keeps its content until the new one is complete.
/// Returns what went wrong, if anything; with Existing::Kept, an existing file is an error.
std::optional<std::string> WriteFileWhole(const std::string& path, const std::string& content,
                                          Existing existing = Existing::Replaced);

/// Checks in advance whether a file can be written there. Returns what is wrong, if anything.
std::optional<std::string> CheckTarget(const std::string& path, Existing existing);

} // namespace orvel::tools
