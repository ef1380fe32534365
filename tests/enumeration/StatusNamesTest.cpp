#include "enumeration/StatusNames.h"

#include <stdexcept>

#include <doctest/doctest.h>

using namespace orvel::shared::enumeration;

namespace {

constexpr char missingKey[] = "invalid unordered_map<K, T> key";

} // namespace

TEST_CASE("Availability codes 1 to 21 have names, 0 and 22 throw")
{
    CHECK(AvailabilityName(1) == "Other");
    CHECK(AvailabilityName(3) == "RunningFullPower");
    CHECK(AvailabilityName(8) == "OffLine");
    CHECK(AvailabilityName(13) == "PowerSave_Unknown");
    CHECK(AvailabilityName(21) == "Quiesced");
    CHECK_THROWS_WITH_AS(AvailabilityName(0), missingKey, std::out_of_range);
    CHECK_THROWS_WITH_AS(AvailabilityName(22), missingKey, std::out_of_range);
}

TEST_CASE("Configuration errors 0 to 31 have names, 32 and negative codes throw")
{
    CHECK(ConfigErrorName(0) == "DeviceWorkingProperly");
    CHECK(ConfigErrorName(22) == "DeviceDisabled");
    CHECK(ConfigErrorName(31) == "CannotLoadDriversRequired");
    CHECK_THROWS_WITH_AS(ConfigErrorName(32), missingKey, std::out_of_range);
    CHECK_THROWS_WITH_AS(ConfigErrorName(-1), missingKey, std::out_of_range);
}

TEST_CASE("Memory types 12 and 21 to 23 have intentionally no name")
{
    for (const uint32_t code : {0U, 12U, 21U, 22U, 23U, 32U, 34U}) {
        CAPTURE(code);
        CHECK_THROWS_WITH_AS(MemoryTypeName(code), missingKey, std::out_of_range);
    }
    CHECK(MemoryTypeName(2) == "UNKNOWN");
    CHECK(MemoryTypeName(14) == "THREE_DRAM");
    CHECK(MemoryTypeName(20) == "DDR2_FB_DIMM");
    CHECK(MemoryTypeName(24) == "DDR3");
    CHECK(MemoryTypeName(26) == "DDR4");
    CHECK(MemoryTypeName(31) == "LOGICAL_NON_VOLATILE");
}

TEST_CASE("Every code of a table has a name of its own")
{
    for (uint32_t code = 1; code <= 21; ++code) {
        CHECK_FALSE(AvailabilityName(code).empty());
    }
    for (int32_t code = 0; code <= 31; ++code) {
        CHECK_FALSE(ConfigErrorName(code).empty());
    }
    int named = 0;
    for (uint32_t code = 0; code <= 255; ++code) {
        try {
            named += MemoryTypeName(code).empty() ? 0 : 1;
        } catch (const std::out_of_range&) {
        }
    }
    CHECK(named == 27);
}
