#include <doctest/doctest.h>

#include "support/Enumerated.h"

using namespace orvel::tests;

TEST_CASE("The example vendor's adapter is read from WMI only")
{
    const Enumerated result = Enumerate(Machine("example-desktop"));
    REQUIRE(result.Cards.size() == 1);
    CHECK(result.Card(0)["Manufacturer"] == "Example");
    CHECK(result.Card(0)["DeviceId"] == "0001");
    CHECK(result.Card(0)["CardName"] == "Example Graphics 1");
}
