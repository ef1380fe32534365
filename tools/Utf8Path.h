#pragma once

#include <filesystem>
#include <string>

namespace orvel::tools {

/// The path that a UTF-8 text names.
inline std::filesystem::path ToPath(const std::string& utf8)
{
    return std::u8string(utf8.begin(), utf8.end());
}

/// A path as UTF-8 text.
inline std::string PathText(const std::filesystem::path& path)
{
    const std::u8string utf8 = path.u8string();
    return std::string(utf8.begin(), utf8.end());
}

} // namespace orvel::tools
