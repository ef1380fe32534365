#include "json/Json.h"

#include <nlohmann/json.hpp>

#include "model/Names.h"

namespace orvel::shared::inventory {

namespace {

using Json = nlohmann::ordered_json;

template <typename Field>
Json OrNull(const std::optional<Field>& field)
{
    return field ? Json(*field) : Json();
}

Json TextOrNull(const char* text)
{
    return text ? Json(text) : Json();
}

Json ToJson(const Display& display)
{
    return {
        {"gdi_name", OrNull(display.gdiName)},
        {"monitor_name", OrNull(display.monitorName)},
        {"width", OrNull(display.width)},
        {"height", OrNull(display.height)},
        {"refresh_millihertz", OrNull(display.refreshMillihertz)},
        {"connector", OrNull(display.connector)},
        {"primary", OrNull(display.primary)},
    };
}

struct DataVisitor {
    Json operator()(std::monostate) const { return {}; }
    Json operator()(const Displays& displays) const
    {
        auto list = Json::array();
        for (const auto& display : displays) {
            list.push_back(ToJson(display));
        }
        return list;
    }
    Json operator()(const auto& value) const { return value; }
};

Json ToJson(const Data& data)
{
    return std::visit(DataVisitor(), data);
}

Json CodeOf(const Answer& answer)
{
    return answer.status == Status::Failed ? Json(answer.code) : Json();
}

Json FullValue(const Value& value)
{
    return {
        {"value", ToJson(value.data)},
        {"status", StatusText(value.status)},
        {"source", value.source ? Json(SourceText(*value.source)) : Json()},
        {"code", CodeOf(value)},
        {"reason", TextOrNull(ReasonText(value.reason))},
    };
}

Json ToJson(const Card& card, JsonForm form)
{
    auto object = Json::object();
    for (std::size_t index = 0; index < propertyCount; ++index) {
        const auto& value = card.values[index];
        object[RowOf(static_cast<Property>(index)).name] = form == JsonForm::Full ? FullValue(value) : ToJson(value.data);
    }
    return object;
}

Json ToJson(const SourceReport& report)
{
    return {
        {"name", SourceText(report.source)},
        {"state", SourceStateText(report.end.status)},
        {"code", CodeOf(report.end)},
        {"reason", TextOrNull(ReasonText(report.end.reason))},
    };
}

} // namespace

std::string ToJson(const Findings& findings, JsonForm form)
{
    Json document = {
        {"schema_version", schemaVersion},
        {"form", form == JsonForm::Full ? "full" : "flat"},
        {"depth", DepthText(findings.depth)},
        {"sources", Json::array()},
        {"cards", Json::array()},
    };
    for (const auto& report : findings.sources) {
        document["sources"].push_back(ToJson(report));
    }
    for (const auto& card : findings.cards) {
        document["cards"].push_back(ToJson(card, form));
    }
    return document.dump(2) + "\n";
}

} // namespace orvel::shared::inventory
