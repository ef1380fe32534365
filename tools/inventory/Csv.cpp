#include <string_view>

#include "inventory/Facts.h"
#include "inventory/InventoryFormats.h"

namespace orvel::tools {

namespace {

/// A text that no spreadsheet takes for a formula.
std::string AsPlainText(const std::string& text)
{
    constexpr std::string_view formulaStarts = "=+-@\t\r\n";
    const bool isFormula = !text.empty() && formulaStarts.find(text.front()) != std::string_view::npos;
    return isFormula ? "'" + text : text;
}

struct FieldVisitor {
    std::string operator()(std::monostate) const { return {}; }
    std::string operator()(bool flag) const { return flag ? "true" : "false"; }
    std::string operator()(uint64_t number) const { return std::to_string(number); }
    std::string operator()(const std::string& text) const { return AsPlainText(text); }
    std::string operator()(const InventoryDisplays& displays) const
    {
        std::string text;
        for (const InventoryDisplay& display : displays) {
            text += (text.empty() ? "" : "; ") + DisplayText(display);
        }
        return displays.empty() ? "none" : AsPlainText(text);
    }
};

/// A field, in quotes where it needs them.
std::string Field(const std::string& text)
{
    if (text.find_first_of(",\"\r\n") == std::string::npos) {
        return text;
    }
    std::string quoted = "\"";
    for (const char character : text) {
        quoted += character == '"' ? "\"\"" : std::string(1, character);
    }
    return quoted + "\"";
}

template <typename Items, typename ToText>
std::string Row(const Items& items, ToText toText)
{
    std::string row;
    for (const auto& item : items) {
        row += (&item == &items.front() ? "" : ",") + Field(toText(item));
    }
    return row + "\r\n";
}

} // namespace

std::string InventoryAsCsv(const Inventory& inventory)
{
    std::string text = Row(inventory.Table, [](const InventoryProperty& property) { return property.Name; });
    for (const InventoryCard& card : inventory.Cards) {
        text += Row(card, [](const InventoryValue& value) { return std::visit(FieldVisitor(), value.Data); });
    }
    return text;
}

} // namespace orvel::tools
