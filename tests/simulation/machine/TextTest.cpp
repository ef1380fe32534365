// Conversion between UTF-8 and UTF-16, and comparison of texts.

#include <doctest/doctest.h>

#include "machine/Text.h"

using namespace orvel::simulation;

TEST_CASE("Text is unchanged after conversion to UTF-16 and back")
{
    const std::string text = "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"; // a, ä, €, an emoji
    CHECK(ToWide(text) == std::wstring(L"a\x00E4\x20AC\xD83D\xDE00"));
    CHECK(ToUtf8(ToWide(text)) == text);
    CHECK(ToWide("").empty());
    CHECK(ToUtf8(L"").empty());
}

TEST_CASE("Invalid text becomes replacement characters")
{
    CHECK(ToWide("a\xFFz") == std::wstring(L"a\xFFFDz"));
    CHECK(ToUtf8(std::wstring(L"a\xD83Dz")) == "a\xEF\xBF\xBDz");
}

TEST_CASE("Case is folded beyond ASCII")
{
    CHECK(FoldCase(L"Win32_BIOS") == L"win32_bios");
    CHECK(FoldCase(L"\x00C4\x0416") == std::wstring(L"\x00E4\x0436"));
    CHECK(FoldCase(L"").empty());
}
