#include <limits>

#include <doctest/doctest.h>

#include "Enumeration.h"
#include "Explain.h"
#include "Report.h"
#include "RunEnds.h"
#include "support/SimulatedRun.h"

using namespace orvel::tests;
using namespace orvel::tools;

namespace {

Report ReportOf(const Json& machine)
{
    Simulate(machine);
    return Enumerate([](const LogLine&) {});
}

Json Parsed(const std::string& text)
{
    return Json::parse(text);
}

/// The index of a property in a card.
size_t IndexOf(const std::string& name)
{
    size_t index = 0;
    while (name != cardFields[index].Name) {
        ++index;
    }
    return index;
}

constexpr char run[] = "orvel::shared::enumeration::GraphicCardEnumeration::QueryGraphicCards";

const LogLine ended = {2, run, "Unexpected error occurred: Failed to load opencl.dll"};

} // namespace

TEST_CASE("The summary counts cards, warnings and errors")
{
    Report report;
    CHECK(SummaryOf(report) == "0 cards, 0 warnings, 0 errors");
    report.Log = {{2, "", ""}, {3, "", ""}, {3, "", ""}, {4, "", ""}};
    report.Cards.resize(1);
    CHECK(SummaryOf(report) == "1 card, 2 warnings, 1 error");
}

TEST_CASE("The summary does not count AMD's messages of success as errors")
{
    Report report;
    for (const char* success : {"ADL initialized successfully", "ADLX initialized successfully",
                                "ADL Destroyed successfully", "GetPixelFillRateMax done."}) {
        report.Log.push_back({2, "", success});
    }
    CHECK(SummaryOf(report) == "0 cards, 0 warnings, 0 errors");
    report.Log.push_back({2, "", "ADL initialized successfully, or not"});
    CHECK(SummaryOf(report) == "0 cards, 0 warnings, 1 error");
}

TEST_CASE("A text without cards has the reason for each run that ended, and names --doctor")
{
    Report report;
    report.Log = {{2, run, "Unexpected error occurred: Argument out of range"},
                  {2, "orvel::shared::enumeration::NvapiClient::NvapiClient", "Failed to initialize NvAPI. Status code: -2"},
                  {2, run, "Unexpected error occurred: Failed to initialize NVAPI. Status code: -2"},
                  {2, "orvel::shared::enumeration::ADLWrapper::ADLWrapper", "ADL initialization failed"},
                  {2, "orvel::shared::enumeration::AMD::QueryInfo", "Failed to get 3DSettings services"},
                  {2, "orvel::shared::enumeration::ADLWrapper::~ADLWrapper", "ADL Destroyed successfully"}};
    CHECK(ToText(report, {}) == R"(No graphics card was enumerated.
    Intel                 The machine's memory has a type without a known
                          transfer rate, usually DDR5 or LPDDR5.
    NVIDIA                No NVIDIA driver is installed (nvapi64.dll is
                          missing); this is normal without an NVIDIA card.
    AMD                   AMD's driver interfaces (ADL, ADLX) are missing or do
                          not start; this is normal without an AMD card.
Run with --doctor to see what is missing on this computer.

0 cards, 0 warnings, 5 errors
)");
}

TEST_CASE("A run that ends before its first line belongs to the vendor after the previous run")
{
    Report report;
    report.Log = {ended,
                  {2, "orvel::shared::enumeration::NvapiClient::NvapiClient", "Failed to initialize NvAPI. Status code: -2"},
                  {2, run, "Unexpected error occurred: Failed to initialize NVAPI. Status code: -2"},
                  ended};
    const auto ends = EndedRuns(report);
    REQUIRE(ends.size() == 3);
    CHECK(ends[0].Vendor == "Intel");
    CHECK(ends[1].Vendor == "NVIDIA");
    CHECK(ends[2].Vendor == "AMD");
}

TEST_CASE("A run that ends for an unknown reason is shown with its message")
{
    Report report;
    report.Log = {{2, run, "Unexpected error occurred: something else"}};
    CHECK(ToText(report, {}).find("    Intel                 something else\n") != std::string::npos);
}

TEST_CASE("A thrown status ends the run of the vendor that had started")
{
    Report report;
    report.Error = static_cast<long>(0x80041003);
    const auto ends = EndedRuns(report);
    REQUIRE(ends.size() == 1);
    CHECK(ends[0].Vendor == "Intel");
    CHECK(ends[0].Meaning.starts_with("The WMI query for the memory modules failed (status 0x80041003)"));
}

TEST_CASE("A text with cards does not explain runs that ended")
{
    Report report = ReportOf(HealthyLaptop());
    CHECK(ToText(report, {}).find("--doctor") == std::string::npos);
}

TEST_CASE("Brief text omits neutral values")
{
    const Report report = ReportOf(HealthyLaptop());
    CHECK(ToText(report, {}).find("not available") != std::string::npos);
    CHECK(ToText(report, {.IsBrief = true}).find("not available") == std::string::npos);
    CHECK(ToText(report, {}).starts_with("Card 1: Intel(R) UHD Graphics 620\n"));
    CHECK(ToText(report, {.IsColoured = true}).starts_with("\x1B[1mCard 1: "));
}

TEST_CASE("JSON contains the thrown exception and its type")
{
    Report report;
    CHECK(Parsed(ToJson(report))["thrown"] == nullptr);
    report.Error = static_cast<long>(0x80041003);
    CHECK(Parsed(ToJson(report))["thrown"] == Json{{"type", "long"}, {"value", -2147217405}});
    report.Error = "text";
    CHECK(Parsed(ToJson(report))["thrown"] == Json{{"type", "exception"}, {"what", "text"}});
}

TEST_CASE("JSON replaces bytes that are not UTF-8, and writes infinity as a text")
{
    Report report = ReportOf(HealthyLaptop());
    report.Cards[0][IndexOf("CardName")] = "A\xFF";
    report.Cards[0][IndexOf("PixelFillRate")] = std::numeric_limits<float>::infinity();
    const Json card = Parsed(ToJson(report))["cards"][0];
    CHECK(card["CardName"] == "A\uFFFD");
    CHECK(card["PixelFillRate"] == "Infinity");
}

TEST_CASE("The message that ended a run is explained, with its cause on this computer")
{
    Json machine = HealthyLaptop();
    machine.erase("opencl");
    Simulate(machine);
    Report report;
    report.Log = {ended};
    const Json end = Parsed(ExplainAsJson(report))["ended"][0];
    CHECK(end["message"] == "Failed to load opencl.dll");
    CHECK(end["meaning"].get<std::string>().starts_with("The OpenCL loader (opencl.dll) is missing; "));
    CHECK(end["cause"].get<std::string>().starts_with("opencl.dll cannot be loaded"));
    CHECK(ExplainAsText(report, {}).find("on this computer: opencl.dll cannot be loaded") != std::string::npos);
}

TEST_CASE("The last warning of a run is the cause of its end")
{
    Simulate(HealthyLaptop());
    Report report;
    report.Log = {{3, "Intel::QueryInfo", "Failed to get Driver Date from WMI"}, ended};
    CHECK(Parsed(ExplainAsJson(report))["ended"][0]["cause"] ==
          "the last warning before it: \"Failed to get Driver Date from WMI\"");
}

TEST_CASE("Every property has a source, and a reason if it has its neutral value")
{
    const Json explained = Parsed(ExplainAsJson(ReportOf(HealthyLaptop())));
    REQUIRE(explained["cards"].size() == 1);
    CHECK(explained["cards"][0].size() == cardFields.size());
    for (const Json& property : explained["cards"][0]) {
        CAPTURE(property.dump());
        CHECK_FALSE(property["source"].get<std::string>().empty());
        CHECK(property["available"].get<bool>() == property["reason"].is_null());
    }
}
