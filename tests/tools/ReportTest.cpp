#include <limits>

#include <doctest/doctest.h>

#include "Enumeration.h"
#include "Explain.h"
#include "Report.h"
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

/// The place of a property in a card.
size_t IndexOf(const std::string& name)
{
    size_t index = 0;
    while (name != cardFields[index].Name) {
        ++index;
    }
    return index;
}

const LogLine ended = {2, "GraphicCardEnumeration::QueryGraphicCards",
                       "Unexpected error occurred: Failed to load opencl.dll"};

} // namespace

TEST_CASE("The summary counts cards, warnings and errors")
{
    Report report;
    CHECK(SummaryOf(report) == "0 cards, 0 warnings, 0 errors");
    report.Log = {{2, "", ""}, {3, "", ""}, {3, "", ""}, {4, "", ""}};
    report.Cards.resize(1);
    CHECK(SummaryOf(report) == "1 card, 2 warnings, 1 error");
}

TEST_CASE("Brief text leaves out what has its neutral value")
{
    const Report report = ReportOf(HealthyLaptop());
    CHECK(ToText(report, {}).find("not told") != std::string::npos);
    CHECK(ToText(report, {.IsBrief = true}).find("not told") == std::string::npos);
    CHECK(ToText(report, {}).starts_with("Card 1: Intel(R) UHD Graphics 620\n"));
    CHECK(ToText(report, {.IsColoured = true}).starts_with("\x1B[1mCard 1: "));
}

TEST_CASE("JSON has what was thrown, by its type")
{
    Report report;
    CHECK(Parsed(ToJson(report))["thrown"] == nullptr);
    report.Error = static_cast<long>(0x80041003);
    CHECK(Parsed(ToJson(report))["thrown"] == Json{{"type", "long"}, {"value", -2147217405}});
    report.Error = "text";
    CHECK(Parsed(ToJson(report))["thrown"] == Json{{"type", "exception"}, {"what", "text"}});
}

TEST_CASE("JSON replaces bytes that are no UTF-8, and writes infinity as a text")
{
    Report report = ReportOf(HealthyLaptop());
    report.Cards[0][IndexOf("CardName")] = "A\xFF";
    report.Cards[0][IndexOf("PixelFillRate")] = std::numeric_limits<float>::infinity();
    const Json card = Parsed(ToJson(report))["cards"][0];
    CHECK(card["CardName"] == "A\uFFFD");
    CHECK(card["PixelFillRate"] == "Infinity");
}

TEST_CASE("What ended a run is explained, with what is seen of its cause")
{
    Json machine = HealthyLaptop();
    machine.erase("opencl");
    Simulate(machine);
    Report report;
    report.Log = {ended};
    const Json end = Parsed(ExplainAsJson(report))["ended"][0];
    CHECK(end["message"] == "Failed to load opencl.dll");
    CHECK(end["meaning"].get<std::string>().starts_with("The OpenCL loader is missing."));
    CHECK(end["cause"].get<std::string>().starts_with("opencl.dll cannot be loaded"));
    CHECK(ExplainAsText(report, {}).find("on this computer: opencl.dll cannot be loaded") != std::string::npos);
}

TEST_CASE("A warning of the same run is its cause")
{
    Simulate(HealthyLaptop());
    Report report;
    report.Log = {{3, "Intel::QueryInfo", "Failed to get Driver Date from WMI"}, ended};
    CHECK(Parsed(ExplainAsJson(report))["ended"][0]["cause"] ==
          "the last warning before it is \"Failed to get Driver Date from WMI\"");
}

TEST_CASE("Every property has a source, and a reason where it has its neutral value")
{
    const Json explained = Parsed(ExplainAsJson(ReportOf(HealthyLaptop())));
    REQUIRE(explained["cards"].size() == 1);
    CHECK(explained["cards"][0].size() == cardFields.size());
    for (const Json& property : explained["cards"][0]) {
        CAPTURE(property.dump());
        CHECK_FALSE(property["source"].get<std::string>().empty());
        CHECK(property["told"].get<bool>() == property["reason"].is_null());
    }
}
