#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace orvel::tools {

/// The type of a property's values.
enum class ValueType { Text, Number, Flag, Displays };

/// A row of the inventory's table of properties.
struct InventoryProperty {
    std::string Name; ///< as in the document
    ValueType Type = ValueType::Text;
    std::string Unit; ///< "" for none
    std::string Description;
};

/// An active display. What is not known is empty.
struct InventoryDisplay {
    std::optional<std::string> GdiName;
    std::optional<std::string> MonitorName;
    std::optional<uint64_t> Width;  ///< pixels
    std::optional<uint64_t> Height; ///< pixels
    std::optional<uint64_t> RefreshMillihertz;
    std::optional<std::string> Connector;
    std::optional<bool> IsPrimary;
};

using InventoryDisplays = std::vector<InventoryDisplay>;

/// How an answer that holds no value, or a source, has ended; texts as in the document, "" for null.
struct InventoryEnd {
    std::string Status; ///< of a value; a source's state
    std::string Source;
    std::optional<int64_t> Code;
    std::string Reason;

    bool operator==(const InventoryEnd&) const = default;
};

/// A value of a card. `Data` holds something only where the status is "known".
struct InventoryValue {
    std::variant<std::monostate, bool, uint64_t, std::string, InventoryDisplays> Data;
    InventoryEnd End;
};

/// A card: one value for each property, in the order of the table.
using InventoryCard = std::vector<InventoryValue>;

/// What the document of a snapshot says.
struct Inventory {
    std::string Depth;
    std::vector<InventoryProperty> Table;
    std::vector<InventoryEnd> Sources;
    std::vector<InventoryCard> Cards;
};

/// Reads the full form of the document. Throws std::exception, with a text that says what is wrong, for anything else.
Inventory ReadInventory(const std::string& json, std::vector<InventoryProperty> table);

/// The value of a property by its name; null for a property that the table does not have.
const InventoryValue* FindValue(const Inventory& inventory, const InventoryCard& card, std::string_view name);

/// A known value of this type; null where it is not known, or has another type.
template <typename Content>
const Content* FindKnown(const Inventory& inventory, const InventoryCard& card, std::string_view name)
{
    const InventoryValue* value = FindValue(inventory, card, name);
    return value ? std::get_if<Content>(&value->Data) : nullptr;
}

/// A known text; "" otherwise. The library has no empty texts.
std::string KnownText(const Inventory& inventory, const InventoryCard& card, std::string_view name);

/// The card's name; "Unnamed card" where it has none.
std::string NameOf(const Inventory& inventory, const InventoryCard& card);

} // namespace orvel::tools
