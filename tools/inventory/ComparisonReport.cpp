#include <sstream>

#include <nlohmann/json.hpp>

#include "TextLayout.h"
#include "inventory/Comparison.h"
#include "inventory/Units.h"

namespace orvel::tools {

namespace {

using Json = nlohmann::ordered_json;

void WriteDifference(std::ostream& out, const Difference& difference)
{
    WriteWrapped(out, difference.Property + " (" + difference.Field + ")", 4);
    WriteEntry(out, "  record", difference.RecordText.empty() ? "none" : difference.RecordText);
    WriteEntry(out, "  inventory", difference.InventoryText);
    WriteWrapped(out, difference.Why, 8);
}

void WriteCard(std::ostream& out, const ComparedCard& card)
{
    if (!card.Note.empty()) {
        WriteWrapped(out, card.Note, 4);
    }
    for (const Difference& difference : card.Differences) {
        WriteDifference(out, difference);
    }
    if (!card.Records.empty()) {
        WriteWrapped(out, std::to_string(card.Agreeing) + (card.Agreeing == 1 ? " value is" : " values are") + " the same.",
                     4);
    }
    std::string names;
    for (const std::string& name : card.OnlyInRecord) {
        names += (names.empty() ? "" : ", ") + name;
    }
    if (!names.empty()) {
        WriteWrapped(out, "Only in the record: " + names + ".", 4);
    }
    out << '\n';
}

Json ToJson(const Difference& difference)
{
    return {{"property", difference.Property},
            {"field", difference.Field},
            {"record", difference.RecordText.empty() ? Json() : Json(difference.RecordText)},
            {"inventory", difference.InventoryText},
            {"why", difference.Why}};
}

Json TextOrNull(const std::string& text)
{
    return text.empty() ? Json() : Json(text);
}

Json ToJson(const Inventory& inventory, const InventoryCard& card, const ComparedCard& compared)
{
    Json object = {{"instance_id", TextOrNull(KnownText(inventory, card, "instance_id"))},
                   {"name", TextOrNull(KnownText(inventory, card, "name"))},
                   {"records", compared.Records},
                   {"note", TextOrNull(compared.Note)},
                   {"agreeing", compared.Agreeing},
                   {"differences", Json::array()},
                   {"only_in_record", compared.OnlyInRecord}};
    for (const Difference& difference : compared.Differences) {
        object["differences"].push_back(ToJson(difference));
    }
    return object;
}

} // namespace

std::string ComparisonAsText(const Inventory& inventory, const Comparison& comparison, bool isColoured)
{
    std::ostringstream out;
    if (!comparison.Problem.empty()) {
        WriteWrapped(out, "There is no record to compare with: " + comparison.Problem, 0);
        return out.str();
    }
    for (size_t i = 0; i < inventory.Cards.size(); ++i) {
        const std::string name = PrintableText(NameOf(inventory, inventory.Cards[i]));
        out << Bold("Card " + std::to_string(i + 1) + ": " + name, isColoured) << '\n';
        WriteCard(out, comparison.Cards[i]);
    }
    for (const std::string& sentence : comparison.Unknown) {
        WriteWrapped(out, sentence, 0);
    }
    return out.str();
}

std::string ComparisonAsJson(const Inventory& inventory, const Comparison& comparison, const std::string& fullDocument)
{
    Json object = {{"schema", 1}, {"problem", TextOrNull(comparison.Problem)}, {"cards", Json::array()}};
    for (size_t i = 0; i < inventory.Cards.size(); ++i) {
        object["cards"].push_back(ToJson(inventory, inventory.Cards[i], comparison.Cards[i]));
    }
    object["unknown_records"] = comparison.Unknown;
    object["inventory"] = Json::parse(fullDocument);
    // A driver's text in the record may hold bytes that are no UTF-8.
    return object.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace orvel::tools
