#include "OutputFile.h"

#include <filesystem>
#include <fstream>

#include <windows.h>

#include "Utf8Path.h"

namespace orvel::tools {

std::optional<std::string> WriteFileWhole(const std::string& path, const std::string& content)
{
    const auto target = ToPath(path);
    auto partial = target;
    partial += ".part";
    {
        std::ofstream file(partial, std::ios::binary | std::ios::trunc);
        file << content;
        file.flush();
        if (!file) {
            file.close();
            std::error_code ignored;
            std::filesystem::remove(partial, ignored);
            return path + ": cannot be written";
        }
    }
    if (!::MoveFileExW(partial.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
        const DWORD error = ::GetLastError();
        std::error_code ignored;
        std::filesystem::remove(partial, ignored);
        return path + ": cannot be replaced (error " + std::to_string(error) + ")";
    }
    return std::nullopt;
}

} // namespace orvel::tools
