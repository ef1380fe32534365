#include <doctest/doctest.h>

#include "model/Text.h"

namespace orvel::shared::inventory {

namespace {

TEST_CASE("UTF-16 becomes UTF-8")
{
    CHECK(Utf8Of(u"").empty());
    CHECK(Utf8Of(u"NVIDIA") == "NVIDIA");
    CHECK(Utf8Of(u"\u00E9") == "\xC3\xA9");
    CHECK(Utf8Of(u"\u7FFB") == "\xE7\xBF\xBB");
    CHECK(Utf8Of(u"\U0001F5A5") == "\xF0\x9F\x96\xA5");
}

TEST_CASE("A lone surrogate becomes U+FFFD")
{
    const std::string replacement = "\xEF\xBF\xBD";
    const char16_t high = 0xD83D, low = 0xDDA5;
    CHECK(Utf8Of(std::u16string{u'a', high}) == "a" + replacement);
    CHECK(Utf8Of(std::u16string{high, u'a'}) == replacement + "a");
    CHECK(Utf8Of(std::u16string{low, u'a'}) == replacement + "a");
    CHECK(Utf8Of(std::u16string{low, high}) == replacement + replacement);
    CHECK(Utf8Of(std::u16string{high, high, low}) == replacement + "\xF0\x9F\x96\xA5");
}

} // namespace

} // namespace orvel::shared::inventory
