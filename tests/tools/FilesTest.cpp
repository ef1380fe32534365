#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <doctest/doctest.h>

#include "MachineFiles.h"
#include "OutputFile.h"
#include "Utf8Path.h"

using namespace orvel::tools;

namespace {

/// A temporary folder for one test.
struct Folder {
    std::filesystem::path Path = std::filesystem::temp_directory_path() / u8"orvel-files-test-\u00FC";

    Folder() { std::filesystem::create_directories(Path); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(Path, ignored);
    }

    size_t Files() const
    {
        const std::filesystem::directory_iterator files(Path);
        return static_cast<size_t>(std::distance(begin(files), end(files)));
    }
};

std::string ContentOf(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace

TEST_CASE("A file is written with exactly its content, and replaces an older file")
{
    const Folder folder;
    const auto path = folder.Path / "report.txt";
    CHECK_FALSE(WriteFileWhole(PathText(path), "first, and longer\n"));
    CHECK_FALSE(WriteFileWhole(PathText(path), "second\n"));
    CHECK(ContentOf(path) == "second\n");
    CHECK(folder.Files() == 1);
}

TEST_CASE("The error for a file that cannot be written names the file, and no temporary file stays")
{
    const Folder folder;
    const std::string inNoFolder = PathText(folder.Path / "none" / "report.txt");
    CHECK(WriteFileWhole(inNoFolder, "text") == inNoFolder + ": cannot be written (error 3)"); // ERROR_PATH_NOT_FOUND
    std::filesystem::create_directory(folder.Path / "taken");
    const auto problem = WriteFileWhole(PathText(folder.Path / "taken"), "text");
    REQUIRE(problem);
    CHECK(problem->find("taken: cannot be replaced (error ") != std::string::npos);
    CHECK(folder.Files() == 1);
}

TEST_CASE("The shipped machines are listed by name")
{
    const auto names = MachineNames();
    CHECK(std::is_sorted(names.begin(), names.end()));
    CHECK(std::find(names.begin(), names.end(), "intel-laptop") != names.end());
    CHECK(TitleOf("intel-laptop") == "Laptop with Intel UHD Graphics 620");
    CHECK(TitleOf("no-such-machine").empty());
}

TEST_CASE("The name of a machine means a file, else a shipped machine")
{
    const Folder folder;
    const std::string own = PathText(folder.Path / "own.json");
    CHECK_FALSE(MachineFile(own));
    REQUIRE_FALSE(WriteFileWhole(own, "{}"));
    CHECK(MachineFile(own) == own);
    REQUIRE(MachineFile("workstation"));
    CHECK(std::filesystem::exists(ToPath(*MachineFile("workstation"))));
    CHECK_FALSE(MachineFile("no-such-machine"));
}
