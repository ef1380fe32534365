#include <algorithm>
#include <iterator>
#include <sstream>
#include <string_view>

#include "FieldSources.h"
#include "Report.h"
#include "RunEnds.h"
#include "TextLayout.h"

namespace orvel::tools {

namespace {

struct Heading {
    FieldGroup Group;
    const char* Text;
};

constexpr Heading headings[] = {
    {FieldGroup::Identity, "Identity"},
    {FieldGroup::DriverAndStatus, "Driver and status"},
    {FieldGroup::Display, "Display"},
    {FieldGroup::Bus, "Bus"},
    {FieldGroup::ClocksAndRates, "Clocks and rates"},
    {FieldGroup::Memory, "Memory"},
    {FieldGroup::Processing, "Processing"},
    {FieldGroup::ThermalLimits, "Thermal limits"},
    {FieldGroup::EccAndMultiGpu, "ECC and multi-GPU"},
};

/// A value with its unit, or "not available". A flag that is not set is "no".
std::string Describe(const CardField& field, const FieldValue& value, const std::string& manufacturer)
{
    if (IsNeutral(field, value) && !std::holds_alternative<bool>(value)) {
        return "not available";
    }
    const std::string unit = SourceOf(field.Name, manufacturer).Unit;
    return ToDisplayText(value) + (unit.empty() ? "" : " ") + unit;
}

void WriteGroup(std::ostream& out, const Card& card, const Heading& heading, const TextStyle& style)
{
    bool hasHeading = false;
    for (size_t i = 0; i < cardFields.size(); ++i) {
        const CardField& field = cardFields[i];
        if (field.Group != heading.Group || (style.IsBrief && IsNeutral(field, card[i]))) {
            continue;
        }
        if (!hasHeading) {
            out << "  " << Bold(heading.Text, style.IsColoured) << '\n';
            hasHeading = true;
        }
        WriteEntry(out, field.Label, Describe(field, card[i], ManufacturerOf(card)));
    }
}

/// Whether a message reports success. AMD's run logs these as errors.
bool IsSuccess(const std::string& message)
{
    constexpr std::string_view successes[] = {"ADL initialized successfully", "ADLX initialized successfully",
                                              "ADL Destroyed successfully", "GetPixelFillRateMax done."};
    return std::find(std::begin(successes), std::end(successes), message) != std::end(successes);
}

/// Why there are no cards: a sentence for each run that ended early.
void WriteMissingCards(std::ostream& out, const Report& report)
{
    out << "No graphics card was enumerated.\n";
    for (const RunEnd& end : EndedRuns(report)) {
        WriteEntry(out, end.Vendor, end.Meaning.empty() ? end.Message : end.Meaning);
    }
    out << "Run with --doctor to see what is missing on this computer.\n\n";
}

std::string Count(size_t number, const char* thing)
{
    return std::to_string(number) + " " + thing + (number == 1 ? "" : "s");
}

} // namespace

std::string SummaryOf(const Report& report)
{
    const auto count = [&report](int severity) {
        return static_cast<size_t>(std::count_if(report.Log.begin(), report.Log.end(), [severity](const LogLine& line) {
            return line.Severity == severity && !IsSuccess(line.Message);
        }));
    };
    constexpr int error = 2;
    constexpr int warning = 3;
    return Count(report.Cards.size(), "card") + ", " + Count(count(warning), "warning") + ", " +
           Count(count(error), "error");
}

std::string ToText(const Report& report, const TextStyle& style)
{
    std::ostringstream out;
    for (size_t i = 0; i < report.Cards.size(); ++i) {
        const Card& card = report.Cards[i];
        out << Bold("Card " + std::to_string(i + 1) + ": " + ValueOf(card, "CardName"), style.IsColoured) << '\n';
        for (const Heading& heading : headings) {
            WriteGroup(out, card, heading, style);
        }
        out << '\n';
    }
    if (report.Cards.empty()) {
        WriteMissingCards(out, report);
    }
    out << SummaryOf(report) << '\n';
    return out.str();
}

} // namespace orvel::tools
