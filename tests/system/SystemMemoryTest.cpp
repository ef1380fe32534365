#include "system/SystemMemory.h"

#include <cmath>

#include <doctest/doctest.h>

#include "support/HostLog.h"

using namespace orvel::shared::enumeration;
using namespace orvel::tests;

namespace {

Json Modules(const std::vector<Json>& rows)
{
    return {{"wmi", {{"classes", {{"Win32_PhysicalMemory", rows}}}}}};
}

Json Module(uint32_t type, uint32_t speed, uint32_t width)
{
    return {{"SMBIOSMemoryType", type}, {"Speed", speed}, {"TotalWidth", width}};
}

} // namespace

TEST_CASE("The memory type is the first one above 0, and 2 if no module reports one")
{
    Simulate(Modules({Module(0, 3200, 64), Module(26, 3200, 64), Module(24, 3200, 64)}));
    CHECK(GetMemoryType() == 26);
    Simulate(Modules({Module(0, 3200, 64)}));
    CHECK(GetMemoryType() == 2);
    Simulate(Modules(Json::array()));
    CHECK(GetMemoryType() == 2);
}

TEST_CASE("A memory type that cannot be read ends the scan with 2")
{
    Json modules = {Module(0, 3200, 64), Module(0, 3200, 64), Module(26, 3200, 64)};
    modules[1]["SMBIOSMemoryType"] = nullptr;
    Simulate(Modules(modules));
    CHECK(GetMemoryType() == 2);
}

TEST_CASE("The memory speed is half of the fastest module's rate")
{
    Simulate(Modules({Module(26, 3200, 64), Module(26, 2666, 64)}));
    CHECK(GetMemorySpeed() == 1600.0F);
    Simulate(Modules({Module(26, 2666, 64), Module(26, 3200, 64)}));
    CHECK(GetMemorySpeed() == 1600.0F);
    Simulate(Modules(Json::array()));
    CHECK(GetMemorySpeed() == 0.0F);
}

TEST_CASE("A speed that cannot be read ends the scan with the fastest so far")
{
    Json modules = {Module(26, 2666, 64), Module(26, 0, 64), Module(26, 3200, 64)};
    modules[1]["Speed"] = nullptr;
    Simulate(Modules(modules));
    CHECK(GetMemorySpeed() == 1333.0F);
}

TEST_CASE("A first module of width 0 is skipped, and widths are not added up")
{
    Simulate(Modules({Module(26, 3200, 0), Module(26, 3200, 64), Module(26, 3200, 64)}));
    CHECK(GetTotalWidth() == 64);
    Simulate(Modules({Module(26, 3200, 0)}));
    CHECK(GetTotalWidth() == 0);
}

TEST_CASE("A width that cannot be read ends the scan with 0")
{
    Json modules = {Module(26, 3200, 0), Module(26, 3200, 64)};
    modules[0]["TotalWidth"] = {{"status", "0x80041001"}};
    Simulate(Modules(modules));
    CHECK(GetTotalWidth() == 0);
}

TEST_CASE("A failed query for the modules is thrown as its status")
{
    Simulate({{"wmi", {{"classes", Json::object()}}}});
    const auto statusOf = [](auto reader) {
        try {
            reader();
        } catch (long status) {
            return static_cast<unsigned long>(status);
        }
        return 0UL;
    };
    CHECK(statusOf(GetMemoryType) == 0x80041010UL);
    CHECK(statusOf(GetMemorySpeed) == 0x80041010UL);
    CHECK(statusOf(GetTotalWidth) == 0x80041010UL);
    CHECK(statusOf(GetMemoryBandwidth) == 0x80041010UL);
}

TEST_CASE("The bandwidth of type 24 is twice that of type 26")
{
    Simulate(Modules({Module(24, 3200, 64)}));
    CHECK(GetMemoryBandwidth() == 12.8F);
    Simulate(Modules({Module(26, 3200, 64)}));
    CHECK(GetMemoryBandwidth() == 6.4F);
}

TEST_CASE("A memory type without a factor is logged and makes the bandwidth intentionally infinite")
{
    Simulate(Modules({Module(34, 4800, 64)}));
    HostLog log;
    CHECK(std::isinf(GetMemoryBandwidth()));
    CHECK(log.Lines == LogLines{"error GetMemoryBandwidth: Error: Argument out of range"});
}

TEST_CASE("The bandwidth is 0 without speed or width, whatever the type is")
{
    Simulate(Modules({Module(34, 0, 64)}));
    CHECK(GetMemoryBandwidth() == 0.0F);
    Simulate(Modules({Module(26, 3200, 0)}));
    CHECK(GetMemoryBandwidth() == 0.0F);
}

TEST_CASE("The bandwidth queries speed, type and width, each on its own client")
{
    Simulate(Modules({Module(26, 3200, 64)}));
    GetMemoryBandwidth();
    CHECK(Only(Trace(), "wmi query") ==
          std::vector<std::string>{"wmi query SELECT Speed FROM Win32_PhysicalMemory",
                                   "wmi query SELECT SMBIOSMemoryType FROM Win32_PhysicalMemory",
                                   "wmi query SELECT TotalWidth FROM Win32_PhysicalMemory"});
    CHECK(Live()["wmi"] == 0);
}
