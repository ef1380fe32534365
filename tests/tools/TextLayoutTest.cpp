#include "TextLayout.h"

#include <sstream>

#include <doctest/doctest.h>

using namespace orvel::tools;

namespace {

std::string Entry(const std::string& label, const std::string& value)
{
    std::ostringstream out;
    WriteEntry(out, label, value);
    return out.str();
}

std::string Wrapped(const std::string& text, size_t indent)
{
    std::ostringstream out;
    WriteWrapped(out, text, indent);
    return out.str();
}

const std::string margin(26, ' ');

} // namespace

TEST_CASE("A value begins in column 27, whatever the label")
{
    CHECK(Entry("Label", "value") == "    Label" + std::string(17, ' ') + "value\n");
    CHECK(Entry("", "") == margin + "\n");
}

TEST_CASE("A value wraps at its last space within 80 columns")
{
    const std::string fits(54, 'a');
    CHECK(Entry("", fits) == margin + fits + "\n");
    CHECK(Entry("", fits + " b") == margin + fits + "\n" + margin + "b\n");
    CHECK(Entry("", std::string(50, 'a') + " bbbb cc") == margin + std::string(50, 'a') + "\n" + margin + "bbbb cc\n");
}

TEST_CASE("A word that is longer than the line is broken at the line's end")
{
    CHECK(Wrapped(std::string(75, 'a'), 6) == "      " + std::string(74, 'a') + "\n      a\n");
}

TEST_CASE("The width of a line is counted in characters, not in bytes of UTF-8")
{
    std::string degrees;
    for (int i = 0; i < 74; ++i) {
        degrees += "°";
    }
    CHECK(Wrapped(degrees, 6) == "      " + degrees + "\n");
    CHECK(Wrapped(degrees + "°", 6) == "      " + degrees + "\n      °\n");
}

TEST_CASE("Bold text is used only on terminals")
{
    CHECK(Bold("text", false) == "text");
    CHECK(Bold("text", true) == "\x1B[1mtext\x1B[0m");
}
