// The query language of the simulated WMI.

#include <doctest/doctest.h>

#include "wmi/Wql.h"

using namespace orvel::simulation;

namespace {

using Names = std::vector<std::wstring>;

bool Fits(const wchar_t* pattern, const wchar_t* text)
{
    return Fulfils({L"P", true, pattern}, text);
}

} // namespace

TEST_CASE("A query names properties, a class and conditions")
{
    const auto query =
        ParseWql(L"SELECT Name, DeviceID FROM Win32_VideoController WHERE Name = 'A' AND PNPDeviceID LIKE 'PCI%'");
    REQUIRE(query);
    CHECK(query->properties == Names{L"Name", L"DeviceID"});
    CHECK(query->className == L"Win32_VideoController");
    REQUIRE(query->conditions.size() == 2);
    CHECK(query->conditions[0].property == L"Name");
    CHECK(query->conditions[0].text == L"A");
    CHECK_FALSE(query->conditions[0].isPattern);
    CHECK(query->conditions[1].text == L"PCI%");
    CHECK(query->conditions[1].isPattern);
}

TEST_CASE("Keywords may be written in lower case, and with other spaces")
{
    const auto query = ParseWql(L"  select *\n\tfrom C where P='x'  ");
    REQUIRE(query);
    CHECK(query->properties.empty());
    CHECK(query->className == L"C");
    CHECK(query->conditions.at(0).text == L"x");
}

TEST_CASE("A backslash escapes only itself and an apostrophe")
{
    const auto textOf = [](const wchar_t* query) { return ParseWql(query).value().conditions.at(0).text; };
    CHECK(textOf(L"SELECT * FROM C WHERE P='it\\'s'") == L"it's");
    CHECK(textOf(L"SELECT * FROM C WHERE P='PCI\\\\VEN'") == L"PCI\\VEN");
    CHECK(textOf(L"SELECT * FROM C WHERE P='a\\b'") == L"a\\b");
    CHECK(textOf(L"SELECT * FROM C WHERE P=''").empty());
}

TEST_CASE("An invalid query is rejected")
{
    for (const wchar_t* text : {L"", L"SELECT", L"SELECT * FROM", L"SELECT FROM C", L"SELECT a, FROM C",
                                L"SELECT * FROM C WHERE", L"SELECT * FROM C WHERE P", L"SELECT * FROM C WHERE P = x",
                                L"SELECT * FROM C WHERE P = 'it's'", L"SELECT * FROM C WHERE P = 'open",
                                L"SELECT * FROM C WHERE P = 'a' AND", L"SELECT * FROM C WHERE P = 'a' OR Q = 'b'",
                                L"SELECT * FROM C WHERE P < 'a'", L"SELECT * FROM C D", L"UPDATE C", L"SELECT * FROM C;"}) {
        CAPTURE(std::wstring(text).size());
        CHECK_FALSE(ParseWql(text));
    }
}

TEST_CASE("A pattern matches the whole text, case-insensitively")
{
    CHECK(Fits(L"PCI%VEN_8086%", L"pci\\ven_8086&dev_9bc4"));
    CHECK(Fits(L"PCI%VEN_8086%", L"PCI\\VENx8086")); // _ is any one character
    CHECK_FALSE(Fits(L"PCI%VEN_8086%", L"PCI\\VEN_10DE"));
    CHECK_FALSE(Fits(L"PCI", L"PCI\\VEN"));
    CHECK(Fits(L"%", L""));
    CHECK(Fits(L"", L""));
    CHECK_FALSE(Fits(L"_", L""));
    CHECK_FALSE(Fits(L"", L"a"));
    CHECK(Fits(L"%ab%ab", L"abxabyab"));
    CHECK_FALSE(Fits(L"%ab%ab", L"abx"));
    CHECK(Fits(L"a%%b", L"ab"));
}

TEST_CASE("An equality comparison treats % and _ as ordinary characters")
{
    CHECK(Fulfils({L"P", false, L"a%"}, L"A%"));
    CHECK_FALSE(Fulfils({L"P", false, L"a%"}, L"ab"));
}

TEST_CASE("A query returns the properties that it names, or all if it names none")
{
    const auto some = ParseWql(L"SELECT Name FROM C").value();
    CHECK(Shows(some, L"NAME"));
    CHECK_FALSE(Shows(some, L"Caption"));
    CHECK(Shows(ParseWql(L"SELECT * FROM C").value(), L"Caption"));
}
