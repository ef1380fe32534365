#include "OutputFile.h"

#include <filesystem>
#include <fstream>

#include <windows.h>

#include "Utf8Path.h"

namespace orvel::tools {

namespace {

/// Writes the content, down to the disk. A full disk may show only when the file is closed.
bool Write(const std::filesystem::path& path, const std::string& content)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << content;
    file.close();
    return !file.fail();
}

bool Move(const std::filesystem::path& from, const std::filesystem::path& to, Existing existing)
{
    const DWORD replaces = existing == Existing::Replaced ? MOVEFILE_REPLACE_EXISTING : 0;
    return ::MoveFileExW(from.c_str(), to.c_str(), replaces | MOVEFILE_WRITE_THROUGH) != FALSE;
}

std::string Problem(const std::string& path, const char* what, DWORD error)
{
    return path + ": " + what + " (error " + std::to_string(error) + ")";
}

} // namespace

std::optional<std::string> CheckTarget(const std::string& path, Existing existing)
{
    std::error_code ignored;
    const bool isWrong = existing == Existing::Kept && std::filesystem::exists(ToPath(path), ignored);
    return isWrong ? std::optional(path + ": exists already") : std::nullopt;
}

std::optional<std::string> WriteFileWhole(const std::string& path, const std::string& content, Existing existing)
{
    const auto target = ToPath(path);
    auto partial = target;
    partial += ".part";
    std::error_code ignored;
    if (auto problem = CheckTarget(path, existing)) {
        return problem;
    }
    if (!Write(partial, content)) {
        const DWORD error = ::GetLastError();
        std::filesystem::remove(partial, ignored);
        return Problem(path, "cannot be written", error);
    }
    if (!Move(partial, target, existing)) {
        const DWORD error = ::GetLastError();
        std::filesystem::remove(partial, ignored);
        return Problem(path, "cannot be replaced", error);
    }
    return std::nullopt;
}

} // namespace orvel::tools
