// ADLX values and failures of a GPU, and the resulting records.

#include <doctest/doctest.h>

#include "AmdRun.h"

using namespace orvel::tests;

namespace {

const std::string radeon = "AMD Radeon RX 6800 XT";

/// The record of a desktop with another value for its ADLX GPU.
Json CardWithGpu(const std::string& key, const Json& value)
{
    Json machine = AmdDesktop();
    AdlxGpu(machine)[key] = value;
    return OnlyCard(machine);
}

} // namespace

TEST_CASE("A video memory size that fails in ADLX is 0")
{
    CHECK(CardWithGpu("TotalVRAM", {{"status", 3}})["MemorySize"] == 0);
    CHECK(CardWithGpu("TotalVRAM", {{"status", 3}, {"value", 8192}})["MemorySize"] == 0);
}

TEST_CASE("An ADL adapter index that fails in ADLX is 0")
{
    Json machine = AmdDesktop();
    AdlAdapter(machine, "5") = {{"ADL2_Adapter_Graphic_Core_Info_Get", {{"iNumCUs", 20}, {"iNumPEsPerCU", 128}}}};
    AdlxGpu(machine)["AdapterIndex"] = 5;
    CHECK(OnlyCard(machine)["Cores"] == 2560);
    AdlxGpu(machine)["AdapterIndex"] = {{"status", 3}, {"value", 5}};
    CHECK(OnlyCard(machine)["Cores"] == 4608);
}

TEST_CASE("A name that fails in ADLX is empty, and matches no row")
{
    Json machine = AmdDesktop();
    AdlxGpu(machine)["Name"] = {{"status", 3}, {"value", radeon}};
    const Enumerated result = EnumerateAmd(machine);
    CHECK(result.Cards.empty());
    CHECK(result.Log == WholeRun({fillRateDone}));
    CHECK(Only(result.Trace, "wmi query SELECT * FROM Win32_VideoController").back() ==
          "wmi query SELECT * FROM Win32_VideoController WHERE PNPDeviceID LIKE 'PCI%VEN_1002%' AND Name = ''");
}

TEST_CASE("The results 1 and 2 of ADLX are successes")
{
    for (const int result : {1, 2}) {
        CAPTURE(result);
        Json machine = AmdDesktop();
        const Json healthy = OnlyCard(machine);
        for (const char* call : {"ADLXInitializeWithCallerAdl", "GetGPUs", "GetPerformanceMonitoringServices",
                                 "GetSupportedGPUMetrics", "GetCurrentGPUMetrics"}) {
            machine["adlx"][call] = result;
        }
        AdlxGpu(machine)["At_GPUList"] = result;
        for (const char* value : {"VendorId", "Name", "PNPString", "DeviceId", "TotalVRAM", "AdapterIndex",
                                  "IsSupportedGPUClockSpeed", "GPUClockSpeed"}) {
            const Json plain = AdlxGpu(machine)[value];
            AdlxGpu(machine)[value] = {{"status", result}, {"value", plain}};
        }
        const Enumerated enumerated = EnumerateAmd(machine);
        CHECK(enumerated.Cards == Json::array({healthy}));
        CHECK(enumerated.Log == WholeRun({fillRateDone}));
    }
}

TEST_CASE("A GPU that cannot be fetched is skipped")
{
    Json machine = AmdTwoCards();
    AdlxGpu(machine, 0)["At_GPUList"] = 3;
    const Enumerated result = EnumerateAmd(machine);
    CHECK(MemorySizes(result) == std::vector<uint32_t>{16368, 16368});
    CHECK(Only(result.Trace, "adlx At_GPUList") == std::vector<std::string>{"adlx At_GPUList 0", "adlx At_GPUList 1"});
    CHECK(result.Log == WholeRun({fillRateDone}));
}

TEST_CASE("A list that shrinks during the loop ends the loop early")
{
    Json machine = AmdTwoCards();
    machine["adlx"]["shrink_after"] = 1;
    Enumerated result = EnumerateAmd(machine);
    CHECK(MemorySizes(result) == std::vector<uint32_t>{16384, 16384});
    CHECK(Only(result.Trace, "adlx At_GPUList") == std::vector<std::string>{"adlx At_GPUList 0"});
    CHECK(result.Log == WholeRun({fillRateDone}));
    AdlxGpu(machine, 0)["At_GPUList"] = 3; // the size is read again after a skipped GPU too
    result = EnumerateAmd(machine);
    CHECK(result.Cards.empty());
    CHECK(result.Log == WholeRun({}));
}

TEST_CASE("An incomplete clock probe logs nothing, and does not change the record")
{
    const Json healthy = OnlyCard(AmdDesktop());
    Json machine = AmdDesktop();
    Json card = healthy;
    SUBCASE("no performance services")
    {
        machine["adlx"]["GetPerformanceMonitoringServices"] = 3;
    }
    SUBCASE("no supported metrics")
    {
        machine["adlx"]["GetSupportedGPUMetrics"] = 3;
    }
    SUBCASE("no current metrics")
    {
        machine["adlx"]["GetCurrentGPUMetrics"] = 3;
    }
    SUBCASE("clock unsupported")
    {
        AdlxGpu(machine)["IsSupportedGPUClockSpeed"] = false;
    }
    SUBCASE("support refused")
    {
        AdlxGpu(machine)["IsSupportedGPUClockSpeed"] = {{"status", 3}, {"value", true}};
    }
    SUBCASE("clock refused")
    {
        AdlxGpu(machine)["GPUClockSpeed"] = {{"status", 3}};
    }
    SUBCASE("clock 0")
    {
        AdlxGpu(machine)["GPUClockSpeed"] = 0;
    }
    SUBCASE("negative clock")
    {
        AdlxGpu(machine)["GPUClockSpeed"] = -1;
    }
    SUBCASE("0 ROPs")
    {
        AdlAdapter(machine)["ADL2_Adapter_Graphic_Core_Info_Get"]["iNumROPs"] = 0;
    }
    SUBCASE("negative ROPs")
    {
        AdlAdapter(machine)["ADL2_Adapter_Graphic_Core_Info_Get"]["iNumROPs"] = -1;
    }
    SUBCASE("no function for ROPs")
    {
        machine["adl"]["missing"] = Json::array({"ADL2_Adapter_Graphic_Core_Info_Get"});
        card["Cores"] = 0;
        card["Shaders"] = 0;
    }
    const Enumerated result = EnumerateAmd(machine);
    CHECK(result.Cards == Json::array({card}));
    CHECK(result.Log == WholeRun({}));
}

TEST_CASE("A clock of 1 MHz and a single ROP complete the clock probe")
{
    Json machine = AmdDesktop();
    AdlxGpu(machine)["GPUClockSpeed"] = 1;
    AdlAdapter(machine)["ADL2_Adapter_Graphic_Core_Info_Get"]["iNumROPs"] = 1;
    const Enumerated result = EnumerateAmd(machine);
    REQUIRE(result.Cards.size() == 1);
    CHECK(result.Log == WholeRun({fillRateDone}));
    CHECK(result.Card(0)["PixelFillRate"] == 0.0);
}
