#pragma once

#include <string>

namespace orvel::shared::enumeration {

/// The version in a file's version resource, such as "6.0.6000.16386"; "" for a file that has none or cannot be read.
std::string FileVersion(const std::wstring& path);

} // namespace orvel::shared::enumeration
