#include "formulas/VideoControllerQuery.h"

#include <doctest/doctest.h>

using namespace orvel::shared::enumeration;

TEST_CASE("Intel's rows are queried by vendor")
{
    CHECK(IntelAdapterQuery() == "SELECT * FROM Win32_VideoController WHERE PNPDeviceID LIKE 'PCI%VEN_8086%'");
}

TEST_CASE("NVIDIA's rows are queried by device id; an empty id selects all")
{
    CHECK(NvidiaAdapterQuery("2504") ==
          "SELECT * FROM Win32_VideoController WHERE PNPDeviceID LIKE 'PCI%VEN_10DE&DEV_2504%'");
    CHECK(NvidiaAdapterQuery("") == "SELECT * FROM Win32_VideoController WHERE PNPDeviceID LIKE 'PCI%VEN_10DE&DEV_%'");
}

TEST_CASE("AMD's rows are queried by name, which is not escaped")
{
    const std::string before = "SELECT * FROM Win32_VideoController WHERE PNPDeviceID LIKE 'PCI%VEN_1002%' AND Name = '";
    for (const std::string name : {"AMD Radeon RX 6800 XT", "", "It's", "%_\xC3\x9C"}) {
        CHECK(AmdAdapterQuery(name) == before + name + "'");
    }
}
