#include "formulas/MemoryBandwidth.h"

#include <limits>
#include <stdexcept>

#include <doctest/doctest.h>

using namespace orvel::shared::enumeration;

TEST_CASE("The transfer factor of a memory type is 1 or 2, and a type without a factor throws")
{
    for (uint32_t code = 0; code <= 40; ++code) {
        CAPTURE(code);
        const bool isSingle = (code >= 1 && code <= 11) || (code >= 13 && code <= 15) || (code >= 17 && code <= 20) ||
                              code == 24 || code == 25;
        if (isSingle) {
            CHECK(TransferFactor(code) == 1);
        } else if (code >= 26 && code <= 31) {
            CHECK(TransferFactor(code) == 2);
        } else {
            CHECK_THROWS_WITH_AS(TransferFactor(code), "Argument out of range", std::runtime_error);
        }
    }
}

TEST_CASE("A clock of 1600 and a width of 64 give 12.8 with factor 1 and 6.4 with factor 2")
{
    CHECK(MemoryBandwidth(1600.0F, 64, 1) == 12.8F);
    CHECK(MemoryBandwidth(1600.0F, 64, 2) == 6.4F);
}

TEST_CASE("Bandwidth is 0 if clock or width is unknown")
{
    CHECK(MemoryBandwidth(0.0F, 64, 2) == 0.0F);
    CHECK(MemoryBandwidth(-1600.0F, 64, 2) == 0.0F);
    CHECK(MemoryBandwidth(1600.0F, 0, 2) == 0.0F);
    CHECK(MemoryBandwidth(std::numeric_limits<float>::quiet_NaN(), 64, 2) == 0.0F);
}

TEST_CASE("Bandwidth is intentionally infinite for a memory type without a factor")
{
    CHECK(MemoryBandwidth(1600.0F, 64, 0) == std::numeric_limits<float>::infinity());
    CHECK(MemoryBandwidth(0.0F, 64, 0) == 0.0F);
}
