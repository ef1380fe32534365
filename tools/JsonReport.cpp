#include <cmath>

#include <nlohmann/json.hpp>

#include "Report.h"

namespace orvel::tools {

namespace {

/// Numbers are 32-bit floats, so that one is written with the digits that read back as the same.
using Json = nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool, std::int64_t, std::uint64_t, float>;

Json ToJsonValue(float number)
{
    if (std::isnan(number)) {
        return "NaN";
    }
    if (std::isinf(number)) {
        return number > 0 ? "Infinity" : "-Infinity";
    }
    return number;
}

Json ToJsonValue(const Card& card)
{
    Json object = Json::object();
    for (size_t i = 0; i < cardFields.size(); ++i) {
        const auto convert = [](const auto& value) -> Json {
            if constexpr (std::is_same_v<std::decay_t<decltype(value)>, float>) {
                return ToJsonValue(value);
            } else {
                return value;
            }
        };
        object[cardFields[i].Name] = std::visit(convert, card[i]);
    }
    return object;
}

Json ToJsonValue(const LogLine& line)
{
    return {{"severity", SeverityName(line.Severity)}, {"function", line.Function}, {"message", line.Message}};
}

Json ToJsonValue(const std::optional<Thrown>& error)
{
    if (!error) {
        return nullptr;
    }
    if (const auto* text = std::get_if<std::string>(&*error)) {
        return {{"type", "exception"}, {"what", *text}};
    }
    return {{"type", "long"}, {"value", std::get<long>(*error)}};
}

template <typename Items>
Json ToJsonArray(const Items& items)
{
    Json array = Json::array();
    for (const auto& item : items) {
        array.push_back(ToJsonValue(item));
    }
    return array;
}

} // namespace

std::string ToJson(const Report& report)
{
    const Json simulation = report.Simulation ? Json::parse(*report.Simulation) : Json::object();
    Json object = {{"schema", 1}, {"machine", simulation.value("machine", Json())}};
    object["cards"] = ToJsonArray(report.Cards);
    object["log"] = ToJsonArray(report.Log);
    object["thrown"] = ToJsonValue(report.Error);
    for (const char* key : {"trace", "live", "violations"}) {
        if (simulation.contains(key)) {
            object[key] = simulation[key];
        }
    }
    // A driver's text may hold bytes that are no UTF-8.
    return object.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace orvel::tools
