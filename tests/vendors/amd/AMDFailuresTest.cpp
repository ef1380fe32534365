// The failures that end AMD's run, and the state after them.

#include "vendors/amd/AMD.h"

#include <algorithm>

#include <doctest/doctest.h>

#include "AmdRun.h"
#include "Enumeration.h"
#include "record/GraphicCardList.h"

using namespace orvel::tests;

namespace {

const std::string videoControllersFailed =
    Line("error", "AMD::QueryInfo", "Failed to get Win32_VideoController fields from WMI");

/// Checks that the run completes without a GPU, and without calls of ADLX if `isAdlxAsked` is false.
void CheckNoCards(const Json& machine, const LogLines& log, bool isAdlxAsked)
{
    const Enumerated result = EnumerateAmd(machine);
    CHECK(result.Cards.empty());
    CHECK(result.Thrown == nullptr);
    CHECK(result.Log == log);
    CHECK(Only(result.Trace, "adlx").empty() != isAdlxAsked);
}

/// A desktop with another value for its ADLX GPU.
Json DesktopWithGpu(const std::string& key, const Json& value)
{
    Json machine = AmdDesktop();
    AdlxGpu(machine)[key] = value;
    return machine;
}

Json DesktopWithRow(const std::string& property, const Json& value)
{
    Json machine = AmdDesktop();
    VideoController(machine)[property] = value;
    return machine;
}

} // namespace

TEST_CASE("A machine without the OpenCL loader has no AMD records, and neither ADL nor ADLX is loaded")
{
    Json machine = AmdDesktop();
    machine.erase("opencl");
    const Enumerated result = EnumerateAmd(machine);
    CHECK(result.Cards.empty());
    const std::string end =
        Line("error", "GraphicCardEnumeration::QueryGraphicCards", "Unexpected error occurred: Failed to load opencl.dll");
    CHECK(result.Log == LogLines{end, end}); // Intel's and AMD's
    CHECK(Only(result.Trace, "adl").empty());
}

TEST_CASE("Without ADL, ADLX is not loaded")
{
    Json machine = AmdDesktop();
    machine.erase("adl");
    CheckNoCards(machine, {adlFailed, noServices, adlDestroyed, adlDestroyed}, false);
}

TEST_CASE("Without an ADL context, ADLX is not loaded")
{
    Json machine = AmdDesktop();
    SUBCASE("refused")
    {
        machine["adl"]["context"] = false;
    }
    SUBCASE("function missing")
    {
        machine["adl"]["missing"] = Json::array({"ADL2_Main_Control_Create"});
    }
    CheckNoCards(machine, {adlReady, noServices, adlDestroyed, adlDestroyed}, false);
}

TEST_CASE("Without ADLX both of its lines are logged, and there are no cards")
{
    Json machine = AmdDesktop();
    machine.erase("adlx");
    CheckNoCards(machine, {adlReady, adlxFailed, noServices, adlDestroyed, adlDestroyed}, false);
}

TEST_CASE("A library that lacks one of ADLX's six entry points is treated as missing")
{
    for (const char* name : {"ADLXQueryFullVersion", "ADLXQueryVersion", "ADLXInitializeWithCallerAdl",
                             "ADLXInitializeWithIncompatibleDriver", "ADLXInitialize", "ADLXTerminate"}) {
        CAPTURE(name);
        Json machine = AmdDesktop();
        machine["adlx"]["missing"] = Json::array({name});
        const Enumerated result = EnumerateAmd(machine);
        CHECK(result.Cards.empty());
        CHECK(result.Log == LogLines{adlReady, adlxFailed, noServices, adlDestroyed, adlDestroyed});
        CHECK(std::ranges::count(result.Trace, "adlx ADLXInitializeWithCallerAdl") == 0);
    }
}

TEST_CASE("If ADLX's initialisation fails, both of its lines are logged, there are no cards, and ADLX is terminated")
{
    for (const int result : {3, 4, 8, 12}) {
        CAPTURE(result);
        Json machine = AmdDesktop();
        machine["adlx"]["ADLXInitializeWithCallerAdl"] = result;
        CheckNoCards(machine, {adlReady, adlxFailed, noServices, adlDestroyed, adlDestroyed}, true);
        CHECK(Only(Trace(), "adlx GetGPUs").empty());
        CHECK(Only(Trace(), "adlx ADLXTerminate").size() == 1);
    }
}

TEST_CASE("With a failed or empty GPU list there are no cards, and ADLX is terminated")
{
    Json machine = AmdDesktop();
    SUBCASE("refused")
    {
        machine["adlx"]["GetGPUs"] = 3;
    }
    SUBCASE("empty")
    {
        machine["adlx"]["gpus"] = Json::array();
    }
    CheckNoCards(machine, WholeRun({}), true);
    CHECK(Only(Trace(), "adlx ADLXTerminate").size() == 1);
    CHECK(Only(Trace(), "adlx At_GPUList").empty());
}

TEST_CASE("A failed BIOS query ends AMD's run with one line, before ADLX")
{
    Json machine = AmdDesktop();
    FailQuery(machine, "SELECT SerialNumber FROM Win32_Bios", 0); // Intel's, and AMD's as that has failed
    const std::string failed = "Failed to get SerialNumber from Win32_Bios";
    CheckNoCards(
        machine,
        {Line("error", "Intel::QueryInfo", failed), adlReady, Line("error", "AMD::QueryInfo", failed), adlDestroyed}, false);
}

TEST_CASE("AMD's run queries the BIOS serial number again if Intel's query failed")
{
    Json machine = AmdDesktop();
    FailQuery(machine, "SELECT SerialNumber FROM Win32_Bios", 1);
    const Enumerated result = EnumerateAmd(machine);
    CHECK(Only(result.Trace, "wmi query SELECT SerialNumber").size() == 2);
    CHECK(result.Cards.size() == 1);
}

TEST_CASE("A failed WMI connection is a failed BIOS query of AMD's run")
{
    Json machine = AmdDesktop();
    machine["wmi"]["connect"] = "0x80041003";
    const std::string failed = "Failed to get SerialNumber from Win32_Bios";
    CheckNoCards(
        machine,
        {Line("error", "Intel::QueryInfo", failed), adlReady, Line("error", "AMD::QueryInfo", failed), adlDestroyed}, false);
}

TEST_CASE("A failed query for the rows of a GPU ends the run at once; earlier records stay, and ADLX stays loaded")
{
    Json machine = AmdTwoCards();
    AdlxGpu(machine, 1)["Name"] = "AMD Radeon RX 6600"; // two equal cards share one query
    FailQuery(machine, "AMD Radeon RX 6600", 1);
    const Enumerated result = EnumerateLeavingAdlx(machine);
    REQUIRE(result.Cards.size() == 2); // both rows have the first card's name
    CHECK(result.Card(0)["MemorySize"] == 16384);
    CHECK(result.Card(1)["MemorySize"] == 16384);
    CHECK(result.Thrown == nullptr);
    CHECK(result.Log == LogLines{adlReady, adlxReady, fillRateDone, fillRateDone, videoControllersFailed, adlDestroyed});
}

TEST_CASE("The GPUs after a failed query for rows are not examined")
{
    Json machine = AmdTwoCards();
    FailQuery(machine, "VEN_1002", 1);
    const Enumerated result = EnumerateLeavingAdlx(machine);
    CHECK(result.Cards.empty());
    CHECK(Only(result.Trace, "adlx At_GPUList") == std::vector<std::string>{"adlx At_GPUList 0"});
    CHECK(result.Log == LogLines{adlReady, adlxReady, fillRateDone, videoControllersFailed, adlDestroyed});
}

TEST_CASE("An apostrophe in a GPU's name makes the query for its rows fail")
{
    Json machine = DesktopWithGpu("Name", "AMD's Radeon");
    VideoController(machine)["Name"] = "AMD's Radeon";
    const Enumerated result = EnumerateLeavingAdlx(machine);
    CHECK(result.Cards.empty());
    CHECK(result.Log == LogLines{adlReady, adlxReady, fillRateDone, videoControllersFailed, adlDestroyed});
    CHECK(Only(result.Trace, "wmi query").back() ==
          "wmi query SELECT * FROM Win32_VideoController WHERE PNPDeviceID LIKE 'PCI%VEN_1002%' AND Name = 'AMD's Radeon'");
}

TEST_CASE("If ADLX stayed loaded, the next enumeration works and terminates it")
{
    Json machine = AmdDesktop();
    FailQuery(machine, "VEN_1002", 1);
    CHECK(Enumerate(machine).Cards.empty());
    CHECK(Live()["adlx"] == 1);
    const auto report = orvel::tools::Enumerate([](const orvel::tools::LogLine&) {});
    CHECK(report.Cards.size() == 1);
    CHECK(Live()["adlx"] == 0);
    CHECK(Live()["adl"] == 0);
    CHECK(Only(Trace(), "adlx ADLXInitializeWithCallerAdl").size() == 2); // ADLX answers the second with 2
    CHECK(Only(Trace(), "adlx ADLXTerminate").size() == 1);
}

TEST_CASE("ADLX that stayed loaded does not work on a machine without it")
{
    Json machine = AmdDesktop();
    FailQuery(machine, "VEN_1002", 1);
    CHECK(Enumerate(machine).Cards.empty());
    Json without = AmdDesktop();
    without.erase("adlx");
    CHECK(EnumerateAmd(without).Cards.empty());
    CHECK(EnumerateAmd(AmdDesktop()).Cards.size() == 1);
}

TEST_CASE("A PNP string that is too short or fails ends the run before the GPU is examined")
{
    for (const Json& text : {Json("PCI\\VEN_1002&DEV_73BF&SUBSYS_0E3"), Json(""), Json({{"status", 3}})}) {
        CAPTURE(text.dump());
        const Json machine = DesktopWithGpu("PNPString", text);
        CheckAmdEnds(machine, "invalid string position");
        const Enumerated result = EnumerateAmd(machine);
        REQUIRE(result.Log.size() == 4);
        CHECK(LogLines(result.Log.begin(), result.Log.begin() + 3) == LogLines{adlReady, adlxReady, adlDestroyed});
        CHECK(Only(result.Trace, "adlx DeviceId").empty());
    }
}

TEST_CASE("A vendor or device identifier that fails in ADLX ends the run at its conversion")
{
    for (const char* text : {"VendorId", "DeviceId"}) {
        CAPTURE(text);
        CheckAmdEnds(DesktopWithGpu(text, {{"status", 3}}), "invalid stoi argument");
    }
    CheckAmdEnds(DesktopWithGpu("DeviceId", "FFFFFFFFFF"), "stoi argument out of range");
}

TEST_CASE("Records that were appended before an exception stay")
{
    Json machine = AmdTwoCards();
    AdlxGpu(machine, 1)["PNPString"] = "PCI";
    CheckAmdEnds(machine, "invalid string position", 2);
}

TEST_CASE("A shared-memory text that is not a number, or too large, ends the run")
{
    Json without = AmdDesktop();
    without.erase("dxgi");
    CheckAmdEnds(without, "invalid stoi argument");
    Json refused = AmdDesktop();
    refused["dxgi"]["factory"] = "0x80004005";
    CheckAmdEnds(refused, "invalid stoi argument");
    Json large = AmdDesktop();
    large["dxgi"]["adapters"][0]["SharedSystemMemory"] = 2147483648ULL << 30;
    CheckAmdEnds(large, "stoi argument out of range");
}

TEST_CASE("The largest shared-memory text that converts is used")
{
    Json machine = AmdDesktop();
    machine["dxgi"]["adapters"][0]["SharedSystemMemory"] = 2147483647ULL << 30;
    CHECK(EnumerateAmd(machine).Card(0)["MemorySharedSize"] == 2147483647);
}

TEST_CASE("A location without a bus number ends AMD's run")
{
    Json machine = AmdDesktop();
    for (Json& key : machine["registry"]) {
        if (key.contains("LocationInformation")) {
            key["LocationInformation"] = "PCI bus";
        }
    }
    CheckAmdEnds(machine, "invalid stoi argument");
}

TEST_CASE("WMI codes without a name end AMD's run")
{
    for (const Json& machine : {DesktopWithRow("Availability", nullptr), DesktopWithRow("Availability", 22),
                                DesktopWithRow("ConfigManagerErrorCode", 32)}) {
        CheckAmdEnds(machine, "invalid unordered_map<K, T> key");
    }
}

TEST_CASE("QueryGraphicCards throws the status of a failed query for the memory modules, with nothing left open")
{
    for (const char* query : {"SELECT Speed", "SELECT SMBIOSMemoryType", "SELECT TotalWidth"}) {
        CAPTURE(query);
        Json machine = AmdDesktop();
        FailQuery(machine, query, 1);
        const Enumerated result = EnumerateAmd(machine);
        CHECK(result.Thrown == Json{{"type", "long"}, {"value", static_cast<int32_t>(0x80041001)}});
        CHECK(result.Cards.empty());
        CHECK(result.Log == LogLines{adlReady, adlxReady, fillRateDone, adlDestroyed});
    }
}

TEST_CASE("The enumerator throws standard exceptions")
{
    using orvel::shared::enumeration::AMD;
    orvel::shared::enumeration::GraphicCardList list;
    Json machine = AmdDesktop();
    machine.erase("opencl");
    Simulate(machine);
    CHECK_THROWS_WITH_AS(AMD().QueryInfo(list), "Failed to load opencl.dll", std::runtime_error);
    Simulate(DesktopWithGpu("PNPString", "PCI"));
    CHECK_THROWS_WITH_AS(AMD().QueryInfo(list), "invalid string position", std::out_of_range);
    Simulate(DesktopWithGpu("VendorId", ""));
    CHECK_THROWS_WITH_AS(AMD().QueryInfo(list), "invalid stoi argument", std::invalid_argument);
    CHECK(list.size() == 0);
}
