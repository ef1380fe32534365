#include "Explain.h"

#include <algorithm>
#include <iterator>
#include <sstream>

#include <nlohmann/json.hpp>

#include "FieldSources.h"
#include "LikelyCause.h"
#include "RunEnds.h"
#include "TextLayout.h"
#include "vendors/Vendors.h"

namespace orvel::tools {

using shared::enumeration::Vendor;
using shared::enumeration::VendorOf;

namespace {

constexpr std::string_view nameSpace = "orvel::shared::enumeration::";

/// The lines logged while a card was read: those of its vendor's run, after the previous card.
std::vector<LogLine> LinesOf(const Report& report, size_t card)
{
    const Vendor* const vendor = VendorOf(ManufacturerOf(report.Cards[card]));
    if (!vendor) {
        return {};
    }
    const Vendor* run = nullptr;
    std::vector<LogLine> lines;
    for (const LogLine& line : report.Log) {
        const Vendor* const begun = BegunBy(line);
        if (begun && begun > vendor) { // they run in the order of the table
            break;
        }
        if (begun && begun != run) {
            run = begun;
            lines.clear();
        }
        if (line.CardsBefore == card) {
            lines.push_back(line);
        }
    }
    return lines;
}

/// The message of the first of the lines that an operation wrote; "" when it wrote none. A name that ends in "::" means
/// all operations of a class.
std::string LineOf(const std::vector<LogLine>& lines, std::string_view reader)
{
    for (const LogLine& line : lines) {
        std::string_view function = line.Function;
        if (function.starts_with(nameSpace)) {
            function.remove_prefix(nameSpace.size());
        }
        const bool isReader = reader.ends_with("::") ? function.starts_with(reader) : function == reader;
        if (!reader.empty() && isReader) {
            return line.Message.substr(0, line.Message.find('\n'));
        }
    }
    return {};
}

/// Why a property has its neutral value; "" if it has another value.
std::string ReasonOf(const std::vector<LogLine>& lines, const CardField& field, const FieldValue& value,
                     const FieldSource& source)
{
    if (!IsNeutral(field, value)) {
        return {};
    }
    if (HasNoSource(source)) {
        return "this vendor has no source for it";
    }
    const std::string line = LineOf(lines, source.Reader);
    return line.empty() ? "the source returned no value, or exactly this one" : "log: " + line;
}

std::string CauseOf(const RunEnd& end)
{
    return LikelyCause(end.Message, end.Warning);
}

void WriteField(std::ostream& out, const std::vector<LogLine>& lines, const CardField& field, const FieldValue& value,
                const std::string& manufacturer)
{
    const FieldSource source = SourceOf(field.Name, manufacturer);
    const std::string reason = ReasonOf(lines, field, value, source);
    const std::string text = ToDisplayText(value);
    WriteEntry(out, field.Name, text.empty() ? "\"\"" : text);
    WriteWrapped(out, std::string("source: ") + source.Source, 8);
    if (!reason.empty()) {
        WriteWrapped(out, "reason: " + reason, 8);
    }
}

} // namespace

std::string ExplainAsText(const Report& report, const TextStyle& style)
{
    std::ostringstream out;
    for (size_t i = 0; i < report.Cards.size(); ++i) {
        const Card& card = report.Cards[i];
        out << Bold("Card " + std::to_string(i + 1) + ": " + ValueOf(card, "CardName"), style.IsColoured) << '\n';
        const auto lines = LinesOf(report, i);
        for (size_t f = 0; f < cardFields.size(); ++f) {
            WriteField(out, lines, cardFields[f], card[f], ManufacturerOf(card));
        }
        out << '\n';
    }
    const auto ended = EndedRuns(report);
    if (!ended.empty()) {
        out << Bold("Runs that ended early", style.IsColoured) << '\n';
    }
    for (const RunEnd& end : ended) {
        WriteWrapped(out, end.Vendor + ": " + end.Message, 2);
        WriteWrapped(out, end.Meaning.empty() ? "no explanation available" : end.Meaning, 6);
        if (const std::string cause = CauseOf(end); !cause.empty()) {
            WriteWrapped(out, "on this computer: " + cause, 6);
        }
    }
    out << SummaryOf(report) << '\n';
    return out.str();
}

std::string ExplainAsJson(const Report& report)
{
    using Json = nlohmann::ordered_json;
    const Json simulation = report.Simulation ? Json::parse(*report.Simulation) : Json::object();
    const Json cards = Json::parse(ToJson(report))["cards"];
    Json object = {{"schema", 1}, {"machine", simulation.value("machine", Json())}, {"cards", Json::array()}};
    for (size_t i = 0; i < report.Cards.size(); ++i) {
        Json properties = Json::array();
        const auto lines = LinesOf(report, i);
        for (size_t f = 0; f < cardFields.size(); ++f) {
            const CardField& field = cardFields[f];
            const FieldValue& value = report.Cards[i][f];
            const FieldSource source = SourceOf(field.Name, ManufacturerOf(report.Cards[i]));
            const std::string reason = ReasonOf(lines, field, value, source);
            properties.push_back({{"field", field.Name},
                                  {"value", cards[i][field.Name]},
                                  {"source", source.Source},
                                  {"available", !IsNeutral(field, value)},
                                  {"reason", reason.empty() ? Json() : Json(reason)}});
        }
        object["cards"].push_back(properties);
    }
    object["ended"] = Json::array();
    for (const RunEnd& end : EndedRuns(report)) {
        object["ended"].push_back(
            {{"vendor", end.Vendor}, {"message", end.Message}, {"meaning", end.Meaning}, {"cause", CauseOf(end)}});
    }
    return object.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace orvel::tools
