#include "inventory/Inventory.h"

#include <stdexcept>
#include <utility>

#include <nlohmann/json.hpp>

namespace orvel::tools {

namespace {

using Json = nlohmann::json;

constexpr int knownSchema = 1;

std::string TextOrNothing(const Json& text)
{
    return text.is_null() ? std::string() : text.get<std::string>();
}

template <typename Content>
std::optional<Content> Optional(const Json& value)
{
    return value.is_null() ? std::nullopt : std::optional(value.get<Content>());
}

InventoryDisplay ReadDisplay(const Json& display)
{
    return {Optional<std::string>(display.at("gdi_name")),
            Optional<std::string>(display.at("monitor_name")),
            Optional<uint64_t>(display.at("width")),
            Optional<uint64_t>(display.at("height")),
            Optional<uint64_t>(display.at("refresh_millihertz")),
            Optional<std::string>(display.at("connector")),
            Optional<bool>(display.at("primary"))};
}

InventoryDisplays ReadDisplays(const Json& list)
{
    InventoryDisplays displays;
    for (const Json& display : list) {
        displays.push_back(ReadDisplay(display));
    }
    return displays;
}

InventoryValue ReadValue(const Json& object, ValueType type)
{
    InventoryValue value;
    value.End = {object.at("status").get<std::string>(), TextOrNothing(object.at("source")),
                 Optional<int64_t>(object.at("code")), TextOrNothing(object.at("reason"))};
    const Json& data = object.at("value");
    if (data.is_null()) {
        return value;
    }
    switch (type) {
    case ValueType::Text:
        value.Data = data.get<std::string>();
        break;
    case ValueType::Number:
        value.Data = data.get<uint64_t>();
        break;
    case ValueType::Flag:
        value.Data = data.get<bool>();
        break;
    case ValueType::Displays:
        value.Data = ReadDisplays(data);
        break;
    }
    return value;
}

InventoryCard ReadCard(const Json& object, const std::vector<InventoryProperty>& table)
{
    InventoryCard card;
    for (const InventoryProperty& property : table) {
        card.push_back(ReadValue(object.at(property.Name), property.Type));
    }
    return card;
}

} // namespace

Inventory ReadInventory(const std::string& json, std::vector<InventoryProperty> table)
{
    const Json document = Json::parse(json);
    if (document.at("schema_version") != knownSchema || document.at("form") != "full") {
        throw std::runtime_error("not the full form of a document of version 1");
    }
    Inventory inventory{document.at("depth").get<std::string>(), std::move(table), {}, {}};
    for (const Json& source : document.at("sources")) {
        inventory.Sources.push_back({source.at("state").get<std::string>(), source.at("name").get<std::string>(),
                                     Optional<int64_t>(source.at("code")), TextOrNothing(source.at("reason"))});
    }
    for (const Json& card : document.at("cards")) {
        inventory.Cards.push_back(ReadCard(card, inventory.Table));
    }
    return inventory;
}

const InventoryValue* FindValue(const Inventory& inventory, const InventoryCard& card, std::string_view name)
{
    for (size_t i = 0; i < inventory.Table.size(); ++i) {
        if (inventory.Table[i].Name == name) {
            return &card[i];
        }
    }
    return nullptr;
}

std::string KnownText(const Inventory& inventory, const InventoryCard& card, std::string_view name)
{
    const auto* text = FindKnown<std::string>(inventory, card, name);
    return text ? *text : std::string();
}

std::string NameOf(const Inventory& inventory, const InventoryCard& card)
{
    const std::string name = KnownText(inventory, card, "name");
    return name.empty() ? "Unnamed card" : name;
}

} // namespace orvel::tools
