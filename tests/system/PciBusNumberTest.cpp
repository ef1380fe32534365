#include "system/PciBusNumber.h"

#include <doctest/doctest.h>

#include "support/HostLog.h"

using namespace orvel::shared::enumeration;
using namespace orvel::tests;

namespace {

const std::string pci = "SYSTEM\\CurrentControlSet\\Enum\\PCI\\";
const std::string uhd620 = "VEN_8086&DEV_5917&SUBSYS_225D17AA&REV_07";

Json WithLocation(const std::string& location, const std::string& key = uhd620 + "\\3&11583659&0&10")
{
    return {{"registry", {{pci + key, {{"LocationInformation", location}}}}}};
}

} // namespace

TEST_CASE("The bus number is the first number of the location")
{
    Simulate(WithLocation("@System32\\drivers\\pci.sys,#65536;PCI bus %1, device %2, function %3;(12,2,0)"));
    HostLog log;
    CHECK(GetBusIdFromRegistry("8086", "5917") == 12);
    CHECK(log.Lines.empty());
}

TEST_CASE("Without the PCI key the bus is 0, and a warning with the error code is logged")
{
    Simulate({{"registry", {{"SOFTWARE\\Something", Json::object()}}}});
    HostLog log;
    CHECK(GetBusIdFromRegistry("8086", "5917") == 0);
    CHECK(log.Lines == LogLines{"warning GetBusIdFromRegistry: Failed to get Bus ID from registry. Error code: 2"});
}

TEST_CASE("An adapter that is not in the registry is on bus 0, and nothing is logged")
{
    Simulate(WithLocation("(1,0,0)", "VEN_10DE&DEV_2504&SUBSYS_397D1462&REV_A1\\4&2283F625&0&0008"));
    HostLog log;
    CHECK(GetBusIdFromRegistry("8086", "5917") == 0);
    CHECK(GetBusIdFromRegistry("10de", "2504") == 0); // the comparison is case-sensitive
    CHECK(log.Lines.empty());
}

TEST_CASE("Of two device keys with the same identifiers, the first whose first instance has a location is used")
{
    Json machine;
    machine["registry"][pci + "VEN_8086&DEV_5917&SUBSYS_00000001&REV_01\\A"] = Json::object();
    machine["registry"][pci + "VEN_8086&DEV_5917&SUBSYS_00000002&REV_01\\A"] = {{"LocationInformation", "(7,0,0)"}};
    machine["registry"][pci + "VEN_8086&DEV_5917&SUBSYS_00000003&REV_01\\A"] = {{"LocationInformation", "(9,0,0)"}};
    Simulate(machine);
    CHECK(GetBusIdFromRegistry("8086", "5917") == 7);
}

TEST_CASE("A device whose first instance lacks the location is skipped, even if its second instance has one")
{
    Json machine;
    machine["registry"][pci + uhd620 + "\\A"] = Json::object();
    machine["registry"][pci + uhd620 + "\\B"] = {{"LocationInformation", "(7,0,0)"}};
    Simulate(machine);
    HostLog log;
    CHECK(GetBusIdFromRegistry("8086", "5917") == 0);
    CHECK(log.Lines.empty());
}

TEST_CASE("A device key without instances is skipped")
{
    Json machine;
    machine["registry"][pci + uhd620] = Json::object();
    Simulate(machine);
    CHECK(GetBusIdFromRegistry("8086", "5917") == 0);
}

TEST_CASE("An empty vendor identifier matches every device key")
{
    Simulate(WithLocation("(3,0,0)"));
    CHECK(GetBusIdFromRegistry("", "5917") == 3);
    CHECK(GetBusIdFromRegistry("", "") == 3);
}

TEST_CASE("A location without three comma-separated numbers, and an empty one, throw")
{
    for (const char* location : {"PCI bus 1, device 0, function 0", ""}) {
        CAPTURE(location);
        Simulate(WithLocation(location));
        CHECK_THROWS_WITH_AS(GetBusIdFromRegistry("8086", "5917"), "invalid stoi argument", std::invalid_argument);
    }
}

TEST_CASE("A bus number that is too large throws")
{
    Simulate(WithLocation("(99999999999,0,0)"));
    CHECK_THROWS_WITH_AS(GetBusIdFromRegistry("8086", "5917"), "stoi argument out of range", std::out_of_range);
}
