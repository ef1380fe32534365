#include "formulas/RegistryText.h"

#include <doctest/doctest.h>

using namespace orvel::shared::enumeration;

namespace {

bool Gives(const std::string& bytes, const std::u16string& text)
{
    return RegistryText(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()) == text;
}

} // namespace

TEST_CASE("A registry text ends at its first NUL, or with the data")
{
    using namespace std::string_literals;
    CHECK(Gives("A\0B\0\0\0"s, u"AB"));
    CHECK(Gives("A\0B\0"s, u"AB"));
    CHECK(Gives("A\0\0\0B\0"s, u"A"));
    CHECK(Gives("\0\0A\0"s, u""));
    CHECK(RegistryText(nullptr, 0).empty());
}

TEST_CASE("A trailing odd byte of a registry text is ignored")
{
    using namespace std::string_literals;
    CHECK(Gives("A\0B"s, u"A"));
    CHECK(Gives("A"s, u""));
}
