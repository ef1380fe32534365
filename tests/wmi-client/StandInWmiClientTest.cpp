// The library with another WMI client DLL, which writes before it fails.

#include <doctest/doctest.h>

#include "support/Enumerated.h"

using namespace orvel::tests;

TEST_CASE("A text whose read fails is empty, even if the read writes one")
{
    const Enumerated result = Enumerate(Machine("workstation"));
    REQUIRE(result.Thrown == nullptr);
    REQUIRE(result.Cards.size() == 3);
    for (const Json& card : result.Cards) {
        CAPTURE(card["Manufacturer"]);
        for (const char* field : {"CurrentResolution", "DriverVersion", "DriverReleaseDate", "AdapterStatus"}) {
            CAPTURE(field);
            CHECK(card[field] == "");
        }
    }
    CHECK(result.Card(0)["GpuType"] == "");        // Intel
    CHECK(result.Card(0)["GraphicsCardSn"] == ""); // the machine's
    CHECK(result.Card(2)["GraphicsCardSn"] == "");
    CHECK(result.Card(1)["AdapterName"] == ""); // Intel's is read
    CHECK(result.Card(2)["AdapterName"] == "");
}
