#include "formulas/PnpDeviceId.h"

#include <stdexcept>

#include <doctest/doctest.h>

using namespace orvel::shared::enumeration;

TEST_CASE("Vendor, device and subsystem are read from fixed positions")
{
    const PnpDeviceId id = ParsePnpDeviceId(R"(PCI\VEN_8086&DEV_5917&SUBSYS_225D17AA&REV_07\3&11583659&0&10)");
    CHECK(id.Vendor == "8086");
    CHECK(id.Device == "5917");
    CHECK(id.Subsystem == "225D-17AA");
}

TEST_CASE("An identifier that ends before a part throws; an identifier that ends within a part truncates the part")
{
    const std::string whole = R"(PCI\VEN_8086&DEV_5917&SUBSYS_225D17AA)";
    for (const size_t size : {0U, 7U, 8U, 16U, 28U, 32U}) {
        CAPTURE(size);
        CHECK_THROWS_WITH_AS(ParsePnpDeviceId(whole.substr(0, size)), "invalid string position", std::out_of_range);
    }
    CHECK(ParsePnpDeviceId(whole.substr(0, 33)).Subsystem == "225D-");
    CHECK(ParsePnpDeviceId(whole.substr(0, 35)).Subsystem == "225D-17");
}

TEST_CASE("A cut can start at the end of the text, but not after it")
{
    CHECK(Cut("abcdef", 2, 3) == "cde");
    CHECK(Cut("abcdef", 4, 9) == "ef");
    CHECK(Cut("abcdef", 6, 1) == "");
    CHECK_THROWS_WITH_AS(Cut("abcdef", 7, 1), "invalid string position", std::out_of_range);
}

TEST_CASE("A matching device id has vendor and device at fixed positions, case-sensitively")
{
    CHECK(IsMatchingDevice("pci\\ven_8086&dev_4680", {"8086", "4680", ""}));
    CHECK(IsMatchingDevice("PCI\\VEN_1002&DEV_73BF&SUBSYS_438E1DA2", {"1002", "73BF", ""}));
    CHECK_FALSE(IsMatchingDevice("pci\\ven_1002&dev_73bf", {"1002", "73BF", ""}));
    CHECK_FALSE(IsMatchingDevice("pci\\ven_8086&dev_4680", {"8086", "4681", ""}));
    CHECK_FALSE(IsMatchingDevice("pci\\ven_8086&dev_468", {"8086", "468", ""}));
    CHECK_FALSE(IsMatchingDevice("", {"", "", ""}));
}
