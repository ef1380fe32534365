#include "formulas/LocationText.h"

#include <random>
#include <regex>

#include <doctest/doctest.h>

using namespace orvel::shared::enumeration;

TEST_CASE("The bus is the first of the first three comma-separated numbers")
{
    CHECK(BusDigits("@System32\\drivers\\pci.sys,#65536;PCI bus %1, device %2, function %3;(1,0,0)") == "1");
    CHECK(BusDigits("(45,0,0)") == "45");
    CHECK(BusDigits("1,2,3,4,5,6") == "1");
    CHECK(BusDigits("1,2,x,30,4,5") == "30");
    CHECK(BusDigits("12,x 7,8,9") == "7");
    CHECK(BusDigits("00012,3,4") == "00012");
}

TEST_CASE("A text without three comma-separated numbers has no bus")
{
    for (const char* text : {"", "PCI bus 1, device 0, function 0", "1,2", "1,2,", ",1,2", "1, 2, 3", "a,b,c", "1,,2,3"}) {
        CAPTURE(text);
        CHECK(BusDigits(text) == "");
    }
}

TEST_CASE("The scan agrees with the regular expression of three comma-separated numbers")
{
    std::mt19937 random(20211108);
    const std::regex pattern("(\\d+,\\d+,\\d+)");
    for (int round = 0; round < 2000; ++round) {
        std::string text;
        for (size_t length = random() % 14; length > 0; --length) {
            text += "01,,,9x("[random() % 8];
        }
        std::smatch match;
        const std::string expected =
            std::regex_search(text, match, pattern) ? match.str().substr(0, match.str().find(',')) : "";
        CAPTURE(text);
        CHECK(BusDigits(text) == expected);
    }
}
