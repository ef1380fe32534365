#include "Explain.h"

#include <algorithm>
#include <iterator>
#include <sstream>

#include <nlohmann/json.hpp>

#include "FieldSources.h"
#include "LikelyCause.h"
#include "Messages.h"
#include "TextLayout.h"
#include "vendors/Vendors.h"

namespace orvel::tools {

using shared::enumeration::Vendor;
using shared::enumeration::VendorOf;
using shared::enumeration::vendors;

namespace {

constexpr std::string_view nameSpace = "orvel::shared::enumeration::";
constexpr std::string_view unexpected = "Unexpected error occurred: ";

/// The vendor whose run begins with the line; null for none.
const Vendor* BegunBy(const LogLine& line)
{
    const auto found = std::find_if(std::begin(vendors), std::end(vendors), [&line](const Vendor& vendor) {
        return !vendor.BeginsRun.empty() && line.Function.ends_with(vendor.BeginsRun);
    });
    return found == std::end(vendors) ? nullptr : found;
}

/// The lines that were written while a card was read: those of its vendor's run, after the card before it.
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

/// The message of the first of the lines that an operation wrote; "" when it wrote none. A name that ends in "::" stands for
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

/// Why a property has its neutral value; "" where the value is told.
std::string ReasonOf(const std::vector<LogLine>& lines, const CardField& field, const FieldValue& value,
                     const FieldSource& source)
{
    if (!IsNotTold(field, value)) {
        return {};
    }
    if (IsToldByNobody(source)) {
        return "this vendor has no source for it";
    }
    const std::string line = LineOf(lines, source.Reader);
    return line.empty() ? "the source told nothing, or exactly this value" : "log: " + line;
}

struct Ended {
    std::string Message;
    std::string Meaning;
    std::string Cause;
};

std::vector<Ended> WhatEnded(const Report& report)
{
    std::vector<Ended> ended;
    std::string lastWarning; // of the same vendor's run
    for (const LogLine& line : report.Log) {
        if (BegunBy(line)) {
            lastWarning.clear();
        } else if (SeverityName(line.Severity) == std::string_view("warning")) {
            lastWarning = line.Message.substr(0, line.Message.find('\n'));
        } else if (line.Message.starts_with(unexpected)) {
            const std::string message = line.Message.substr(unexpected.size());
            ended.push_back({message, ExplainMessage(message), LikelyCause(message, lastWarning)});
            lastWarning.clear();
        }
    }
    if (report.Error) {
        const auto* status = std::get_if<long>(&*report.Error);
        ended.push_back({Describe(*report.Error),
                         status ? ExplainStatus(*status) : ExplainMessage(std::get<std::string>(*report.Error)), ""});
    }
    return ended;
}

void WriteField(std::ostream& out, const std::vector<LogLine>& lines, const CardField& field, const FieldValue& value,
                const std::string& manufacturer)
{
    const FieldSource source = SourceOf(field.Name, manufacturer);
    const std::string reason = ReasonOf(lines, field, value, source);
    const std::string text = ToDisplayText(value);
    WriteEntry(out, field.Name, text.empty() ? "\"\"" : text);
    WriteWrapped(out, std::string("from: ") + source.Source, 8);
    if (!reason.empty()) {
        WriteWrapped(out, "why: " + reason, 8);
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
    const auto ended = WhatEnded(report);
    if (!ended.empty()) {
        out << Bold("What ended early", style.IsColoured) << '\n';
    }
    for (const Ended& end : ended) {
        WriteWrapped(out, end.Message, 2);
        WriteWrapped(out, end.Meaning.empty() ? "no explanation is known" : end.Meaning, 6);
        if (!end.Cause.empty()) {
            WriteWrapped(out, "on this computer: " + end.Cause, 6);
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
                                  {"told", !IsNotTold(field, value)},
                                  {"reason", reason.empty() ? Json() : Json(reason)}});
        }
        object["cards"].push_back(properties);
    }
    object["ended"] = Json::array();
    for (const Ended& end : WhatEnded(report)) {
        object["ended"].push_back({{"message", end.Message}, {"meaning", end.Meaning}, {"cause", end.Cause}});
    }
    return object.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace orvel::tools
