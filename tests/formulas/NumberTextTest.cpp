#include "formulas/NumberText.h"

#include <stdexcept>

#include <doctest/doctest.h>

using namespace orvel::shared::enumeration;

TEST_CASE("A text without a number throws invalid_argument with the function's name")
{
    for (const char* text : {"", "abc", "-", " "}) {
        CAPTURE(text);
        CHECK_THROWS_WITH_AS(ToInt(text), "invalid stoi argument", std::invalid_argument);
        CHECK_THROWS_WITH_AS(ToUnsignedLong(text), "invalid stoul argument", std::invalid_argument);
        CHECK_THROWS_WITH_AS(ToLongLong(text), "invalid stoll argument", std::invalid_argument);
        CHECK_THROWS_WITH_AS(ToFloat(text), "invalid stof argument", std::invalid_argument);
        CHECK_THROWS_WITH_AS(ToDouble(text), "invalid stod argument", std::invalid_argument);
    }
}

TEST_CASE("A number that its type cannot hold throws out_of_range with the function's name")
{
    CHECK_THROWS_WITH_AS(ToInt("2147483648"), "stoi argument out of range", std::out_of_range);
    CHECK_THROWS_WITH_AS(ToInt("-2147483649"), "stoi argument out of range", std::out_of_range);
    CHECK_THROWS_WITH_AS(ToInt("80000000", 16), "stoi argument out of range", std::out_of_range);
    CHECK_THROWS_WITH_AS(ToUnsignedLong("4294967296"), "stoul argument out of range", std::out_of_range);
    CHECK_THROWS_WITH_AS(ToUnsignedLong("123456789", 16), "stoul argument out of range", std::out_of_range);
    CHECK_THROWS_WITH_AS(ToUnsignedLong("ffffffffffffffff", 16), "stoul argument out of range", std::out_of_range);
    CHECK_THROWS_WITH_AS(ToLongLong("9223372036854775808"), "stoll argument out of range", std::out_of_range);
    CHECK_THROWS_WITH_AS(ToFloat("1e39"), "stof argument out of range", std::out_of_range);
    CHECK_THROWS_WITH_AS(ToDouble("1e309"), "stod argument out of range", std::out_of_range);
}

TEST_CASE("Numbers at the limits of their types convert")
{
    CHECK(ToInt("2147483647") == 2147483647);
    CHECK(ToInt("-2147483648") == -2147483647 - 1);
    CHECK(ToInt("8086", 16) == 0x8086);
    CHECK(ToUnsignedLong("4294967295") == 4294967295U);
    CHECK(ToUnsignedLong("225D17AA", 16) == 0x225D17AAU);
    CHECK(ToUnsignedLong("-1") == 4294967295U);
    CHECK(ToLongLong("9223372036854775807") == 9223372036854775807LL);
    CHECK(ToFloat("1150") == 1150.0F);
    CHECK(ToDouble("1150.5") == 1150.5);
}

TEST_CASE("White space before a number and any text after it are ignored")
{
    CHECK(ToInt(" 12abc") == 12);
    CHECK(ToInt("0x1F", 16) == 31);
    CHECK(ToLongLong("7 of 9") == 7);
    CHECK(ToFloat("3.5GHz") == 3.5F);
}
