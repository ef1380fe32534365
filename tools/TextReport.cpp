#include <charconv>
#include <sstream>

#include "Report.h"

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

std::string ToText(const FieldValue& value)
{
    if (const auto* text = std::get_if<std::string>(&value)) {
        return text->empty() ? "-" : *text;
    }
    if (const auto* flag = std::get_if<bool>(&value)) {
        return *flag ? "yes" : "no";
    }
    char digits[64];
    const auto convert = [&digits](auto number) { return std::to_chars(digits, digits + sizeof(digits), number).ptr; };
    const auto* count = std::get_if<unsigned int>(&value);
    return std::string(digits, count ? convert(*count) : convert(std::get<float>(value)));
}

std::string TextOf(const Card& card, const std::string& name)
{
    for (size_t i = 0; i < cardFields.size(); ++i) {
        if (name == cardFields[i].Name) {
            return ToText(card[i]);
        }
    }
    return {};
}

void WriteField(std::ostream& out, const CardField& field, const FieldValue& value, const char* unit)
{
    const std::string label = field.Label;
    out << "    " << label << std::string(22 - label.size(), ' ') << ToText(value);
    if (*unit) {
        out << ' ' << unit;
    }
    out << '\n';
}

void WriteCard(std::ostream& out, const Card& card)
{
    const bool isNvidia = TextOf(card, "Manufacturer") == "Nvidia";
    for (const Heading& heading : headings) {
        out << "  " << heading.Text << '\n';
        for (size_t i = 0; i < cardFields.size(); ++i) {
            const CardField& field = cardFields[i];
            if (field.Group == heading.Group) {
                WriteField(out, field, card[i], isNvidia ? field.NvidiaUnit : field.Unit);
            }
        }
    }
}

} // namespace

std::string ToText(const Report& report)
{
    std::ostringstream out;
    for (size_t i = 0; i < report.Cards.size(); ++i) {
        out << "Card " << i + 1 << ": " << TextOf(report.Cards[i], "CardName") << '\n';
        WriteCard(out, report.Cards[i]);
        out << '\n';
    }
    out << (report.Cards.empty() ? std::string("No") : std::to_string(report.Cards.size()))
        << (report.Cards.size() == 1 ? " card found.\n" : " cards found.\n");
    return out.str();
}

} // namespace orvel::tools
