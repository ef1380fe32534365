#include "vendors/intel/IntelFillRate.h"

#include <doctest/doctest.h>

using namespace orvel::shared::enumeration;

TEST_CASE("The fill rate is the clock times the integer quotient of width and constant arguments")
{
    CHECK(IntelFillRate(1150.0, 64, 8, 1) == 9.2F);
    CHECK(IntelFillRate(1150.0, 64, 8, 2) == 18.4F);
    CHECK(IntelFillRate(1000.0, 71, 8, 1) == 8.0F); // the remainder of 71 / 8 is dropped
}

TEST_CASE("The fill rate is 0 without clock, width, units or constant arguments")
{
    CHECK(IntelFillRate(0.0, 64, 8, 1) == 0.0F);
    CHECK(IntelFillRate(1150.0, 0, 8, 1) == 0.0F);
    CHECK(IntelFillRate(1150.0, 7, 8, 1) == 0.0F);
    CHECK(IntelFillRate(1150.0, 64, 0, 1) == 0.0F);
}
