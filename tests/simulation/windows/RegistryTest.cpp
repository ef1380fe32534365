// The simulated registry.

#include <doctest/doctest.h>

#include <windows.h>

#include "support/SimulatedRun.h"

using namespace orvel::tests;

namespace {

/// The type and bytes of a value below HKEY_LOCAL_MACHINE; REG_NONE if it cannot be read.
std::pair<DWORD, std::string> Read(const wchar_t* path, const wchar_t* name)
{
    DWORD type = REG_NONE;
    std::string bytes(64, '\0');
    auto size = static_cast<DWORD>(bytes.size());
    if (::RegGetValueW(HKEY_LOCAL_MACHINE, path, name, RRF_RT_ANY | RRF_NOEXPAND, &type, bytes.data(), &size) != 0) {
        return {REG_NONE, ""};
    }
    bytes.resize(size);
    return {type, bytes};
}

bool HasKey(const wchar_t* path)
{
    HKEY key = nullptr;
    const bool isThere = ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, KEY_READ, &key) == ERROR_SUCCESS;
    ::RegCloseKey(key);
    return isThere;
}

const std::pair<DWORD, std::string> nothing = {REG_NONE, ""};

} // namespace

TEST_CASE("HKEY_LOCAL_MACHINE has only the keys of the file, with their types")
{
    Simulate({{"registry", {{"A\\B", {{"text", "x\u00e4"}, {"number", 4294967295}, {"bytes", {{"hex", "00FF"}}}}}}}});
    CHECK(Read(L"A\\B", L"text") == std::pair(DWORD{REG_SZ}, std::string("x\0\xE4\0\0\0", 6)));
    CHECK(Read(L"a\\b", L"NUMBER") == std::pair(DWORD{REG_DWORD}, std::string("\xFF\xFF\xFF\xFF", 4)));
    CHECK(Read(L"A\\B", L"bytes") == std::pair(DWORD{REG_BINARY}, std::string("\0\xFF", 2)));
    CHECK(Read(L"A\\B", L"other") == nothing);
    CHECK(HasKey(L"A"));
    CHECK_FALSE(HasKey(L"Software"));
}

TEST_CASE("The next machine has no key of the previous machine")
{
    Simulate({{"registry", {{"A", {{"v", 1}}}}}});
    Simulate({{"registry", {{"B", {{"v", 1}}}}}});
    CHECK_FALSE(HasKey(L"A"));
    CHECK(HasKey(L"B"));
    Simulate(Json::object());
    CHECK_FALSE(HasKey(L"B"));
    CHECK_FALSE(HasKey(L"Software"));
}

TEST_CASE("A machine can use the computer's registry")
{
    Simulate({{"registry", "system"}});
    CHECK(HasKey(L"Software"));
}
