#include "Enumerated.h"

#include "Enumeration.h"

namespace orvel::tests {

namespace {

std::string TextOf(const tools::LogLine& line)
{
    return std::string(tools::SeverityName(line.Severity)) + " " + line.Function + ": " + line.Message;
}

} // namespace

std::string Line(const std::string& severity, const std::string& function, const std::string& message)
{
    return severity + " " + ns + function + ": " + message;
}

Enumerated Enumerate(const Json& machine)
{
    Simulate(machine);
    const tools::Report report = tools::Enumerate([](const tools::LogLine& line) { Note(TextOf(line)); });
    CheckNoViolations();
    const Json json = Json::parse(tools::ToJson(report));
    Enumerated result{json["cards"], {}, json["thrown"], Trace(), Live(), Events()};
    for (const tools::LogLine& line : report.Log) {
        result.Log.push_back(TextOf(line));
    }
    return result;
}

Json AsFloats(Json card)
{
    for (Json& value : card) {
        if (value.is_number_float()) {
            value = value.get<float>();
        }
    }
    return card;
}

} // namespace orvel::tests
