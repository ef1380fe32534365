#include <doctest/doctest.h>

#include <nlohmann/json.hpp>

#include "Readings.h"
#include "json/Json.h"

namespace orvel::shared::inventory {

namespace {

using P = Property;

Findings OneCard()
{
    auto readings = HealthyReadings();
    readings.devices = {GeForce(1, 7)};
    readings.adapters = {GeForceAdapter(7, 24 * gibibyte)};
    readings.End(Source::DxCore) = Failed(0x887A0004);
    return {Depth::Graphics, {{Source::SetupApi, Known(true)}, {Source::Dxgi, NoAnswer()}}, CardsOf(readings)};
}

nlohmann::json Parsed(const Findings& findings, JsonForm form)
{
    return nlohmann::json::parse(ToJson(findings, form));
}

TEST_CASE("The full form has value, status, source, code and reason")
{
    const auto document = Parsed(OneCard(), JsonForm::Full);
    CHECK(document["schema_version"] == 1);
    CHECK(document["form"] == "full");
    CHECK(document["depth"] == "graphics");
    const auto& card = document["cards"][0];
    CHECK(card.size() == propertyCount);
    CHECK(card["dedicated_memory_bytes"] == nlohmann::json::parse(R"({"value": 25769803776, "status": "known",
        "source": "dxgi", "code": null, "reason": null})"));
    CHECK(card["integrated"]["status"] == "not asked");
    CHECK(card["memory_type"] == nlohmann::json::parse(R"({"value": null, "status": "unsupported",
        "source": null, "code": null, "reason": "no source for this vendor"})"));
    CHECK(card["displays"]["value"] == nlohmann::json::array());
}

TEST_CASE("A failure has its code")
{
    auto findings = OneCard();
    findings.cards[0].values[static_cast<std::size_t>(P::Integrated)] = {Failed(0x887A0004), Source::DxCore};
    const auto document = Parsed(findings, JsonForm::Full);
    CHECK(document["cards"][0]["integrated"] == nlohmann::json::parse(R"({"value": null, "status": "failed",
        "source": "dxcore", "code": 2289696772, "reason": "refused"})"));
}

TEST_CASE("Each source has its status, code and reason")
{
    const auto document = Parsed(OneCard(), JsonForm::Full);
    CHECK(document["sources"] == nlohmann::json::parse(R"([
        {"name": "setupapi", "state": "answered", "code": null, "reason": null},
        {"name": "dxgi", "state": "failed", "code": 1460, "reason": "no answer"}])"));
}

TEST_CASE("The flat form has the value, or null for an unknown value")
{
    const auto document = Parsed(OneCard(), JsonForm::Flat);
    CHECK(document["form"] == "flat");
    const auto& card = document["cards"][0];
    CHECK(card.size() == propertyCount);
    CHECK(card["name"] == "NVIDIA GeForce RTX 3060");
    CHECK(card["vendor_id"] == 0x10DE);
    CHECK(card["memory_type"].is_null());
    CHECK(card["displays"] == nlohmann::json::array());
}

TEST_CASE("Displays are objects, with null for unknown values")
{
    auto findings = OneCard();
    Display display;
    display.gdiName = "\\\\.\\DISPLAY1";
    display.refreshMillihertz = 59'940;
    display.primary = true;
    findings.cards[0].values[static_cast<std::size_t>(P::Displays)] = {Known(Displays{display}), Source::DisplayConfig};
    const auto expected = nlohmann::json::parse(R"([{"gdi_name": "\\\\.\\DISPLAY1", "monitor_name": null, "width": null,
        "height": null, "refresh_millihertz": 59940, "connector": null, "primary": true}])");
    CHECK(Parsed(findings, JsonForm::Full)["cards"][0]["displays"]["value"] == expected);
    CHECK(Parsed(findings, JsonForm::Flat)["cards"][0]["displays"] == expected);
}

TEST_CASE("Texts are escaped")
{
    auto findings = OneCard();
    std::string name = "quote \" backslash \\ tab \t bell \a \xEF\xBF\xBD \xE7\xBF\xBB";
    name += '\x7F';
    findings.cards[0].values[static_cast<std::size_t>(P::Name)] = {Known(name), Source::SetupApi};
    const auto text = ToJson(findings, JsonForm::Full);
    CHECK(text.find("quote \\\" backslash \\\\ tab \\t bell \\u0007") != std::string::npos);
    CHECK(nlohmann::json::parse(text)["cards"][0]["name"]["value"] == name);
}

TEST_CASE("The properties have the order of the table")
{
    const auto text = ToJson(OneCard(), JsonForm::Flat);
    std::size_t position = 0;
    for (std::size_t index = 0; index < propertyCount; ++index) {
        const auto found = text.find("\"" + std::string(RowOf(static_cast<Property>(index)).name) + "\":", position);
        REQUIRE(found != std::string::npos);
        position = found;
    }
    CHECK(text.ends_with("}\n"));
}

TEST_CASE("A snapshot without cards is a valid document")
{
    const auto document = Parsed({Depth::System, {}, {}}, JsonForm::Full);
    CHECK(document["depth"] == "system");
    CHECK(document["cards"] == nlohmann::json::array());
}

} // namespace

} // namespace orvel::shared::inventory
