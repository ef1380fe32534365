// The two formats differ in what they call the types: only gauges are the same in both, so that all metrics are gauges, also
// the one that has the texts.

#include "inventory/InventoryFormats.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <string_view>
#include <utility>

#include "inventory/Units.h"

namespace orvel::tools {

namespace {

constexpr std::string_view prefix = "orvel_graphics_card_";

/// Texts that change while a computer runs: as labels, each change would begin a new series.
constexpr std::string_view states[] = {"power_state", "problem"};

/// Numbers that identify, and measure nothing.
constexpr std::string_view identifiers[] = {"vendor_id",   "device_id", "subsystem_id", "revision",    "luid",
                                            "pci_segment", "pci_bus",   "pci_device",   "pci_function"};

template <size_t Count>
bool Contains(const std::string_view (&names)[Count], std::string_view name)
{
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

std::string Escaped(const std::string& text)
{
    std::string escaped;
    for (const char character : text) {
        if (character == '\n') {
            escaped += "\\n";
        } else {
            escaped += character == '\\' || character == '"' ? std::string("\\") + character : std::string(1, character);
        }
    }
    return escaped;
}

using Label = std::pair<std::string, std::string>;

/// Labels with a value; an empty one means the same as none.
std::string LabelsText(const std::vector<Label>& labels)
{
    std::string text;
    for (const auto& [name, value] : labels) {
        if (!value.empty()) {
            text += (text.empty() ? "" : ",") + name + "=\"" + Escaped(value) + "\"";
        }
    }
    return text.empty() ? "" : "{" + text + "}";
}

/// Base units, as Prometheus wants them: the end of the property's name, that of the metric's, and the conversion.
struct BaseUnit {
    std::string_view From;
    std::string_view To;
    std::string (*Convert)(uint64_t);
};

std::string Unchanged(uint64_t number)
{
    return std::to_string(number);
}

std::string Hertz(uint64_t megahertz)
{
    return megahertz == 0 ? "0" : std::to_string(megahertz) + "000000"; // of any size
}

std::string Bytes(uint64_t bits)
{
    return std::to_string(bits / 8) + ThousandthsText(bits % 8 * 125).substr(1);
}

constexpr BaseUnit baseUnits[] = {
    {"_bytes", "_bytes", Unchanged}, {"_celsius", "_celsius", Unchanged}, {"_mhz", "_hertz", Hertz},
    {"_bits", "_bytes", Bytes},      {"_count", "s", Unchanged}, // "_count" belongs to histograms
};

/// The unit of a property; null for a number without one.
const BaseUnit* BaseUnitOf(std::string_view name)
{
    const auto unit = std::find_if(std::begin(baseUnits), std::end(baseUnits),
                                   [&](const BaseUnit& each) { return name.ends_with(each.From); });
    return unit == std::end(baseUnits) ? nullptr : unit;
}

class Writer {
public:
    explicit Writer(const Inventory& itsInventory) : inventory(itsInventory)
    {
        for (const InventoryCard& card : inventory.Cards) {
            keys.push_back(UniqueKey(KnownText(inventory, card, "instance_id")));
        }
    }

    std::string Text()
    {
        Family("orvel_graphics_cards", "", "graphics adapters of this computer");
        Sample("orvel_graphics_cards", {}, std::to_string(inventory.Cards.size()));
        WriteSources();
        WriteInfo();
        for (size_t i = 0; i < inventory.Table.size(); ++i) {
            WriteProperty(i);
        }
        WriteDisplays();
        return text + "# EOF\n";
    }

private:
    /// A card's key: its instance id. An adapter without a device has none.
    std::string UniqueKey(const std::string& instanceId)
    {
        const std::string key = instanceId.empty() ? "no device" : instanceId;
        const int number = ++uses[key];
        return number == 1 ? key : key + " (" + std::to_string(number) + ")";
    }

    void Family(const std::string& name, std::string_view unit, const std::string& description)
    {
        text += "# TYPE " + name + " gauge\n";
        if (!unit.empty()) {
            text += "# UNIT " + name + " " + std::string(unit) + "\n";
        }
        text += "# HELP " + name + " " + Escaped(description) + "\n";
    }

    void Sample(const std::string& name, const std::vector<Label>& labels, const std::string& value)
    {
        text += name + LabelsText(labels) + " " + value + "\n";
    }

    void WriteSources()
    {
        constexpr char name[] = "orvel_graphics_inventory_source_answered";
        Family(name, "",
               "whether a source of the inventory has answered; nothing for one that was not asked or is not there");
        for (const InventoryEnd& source : inventory.Sources) {
            if (source.Status == "answered" || source.Status == "failed") {
                Sample(name, {{"source", source.Source}}, source.Status == "answered" ? "1" : "0");
            }
        }
    }

    /// The label of an identifier, which `toText` writes.
    template <typename ToText>
    Label Identifier(const InventoryCard& card, const char* name, ToText toText) const
    {
        const auto* number = FindKnown<uint64_t>(inventory, card, name);
        return {name, number ? toText(*number) : ""};
    }

    void WriteInfo()
    {
        const std::string name = std::string(prefix) + "info";
        Family(name, "", "identity and driver of a graphics adapter; always 1");
        for (size_t i = 0; i < inventory.Cards.size(); ++i) {
            const InventoryCard& card = inventory.Cards[i];
            std::vector<Label> labels = {{"card", keys[i]}};
            for (const InventoryProperty& property : inventory.Table) {
                if (property.Type == ValueType::Text && property.Name != "instance_id" && !Contains(states, property.Name)) {
                    labels.push_back({property.Name, KnownText(inventory, card, property.Name)});
                }
            }
            labels.push_back(Identifier(card, "vendor_id", IdentifierText));
            labels.push_back(Identifier(card, "device_id", IdentifierText));
            labels.push_back(Identifier(card, "subsystem_id", [](uint64_t number) { return HexText(number, 8); }));
            labels.push_back(Identifier(card, "revision", [](uint64_t number) { return HexText(number, 2); }));
            Sample(name, labels, "1");
        }
    }

    /// The value of a gauge; "" where it is not known.
    std::string ValueText(const InventoryProperty& property, const InventoryCard& card, const BaseUnit* unit) const
    {
        if (property.Name == "power_state") {
            const std::string state = KnownText(inventory, card, property.Name); // "D0"
            return state.size() == 2 && state[0] == 'D' ? state.substr(1) : "";
        }
        if (const auto* flag = FindKnown<bool>(inventory, card, property.Name)) {
            return *flag ? "1" : "0";
        }
        const auto* number = FindKnown<uint64_t>(inventory, card, property.Name);
        return number ? (unit ? unit->Convert(*number) : Unchanged(*number)) : "";
    }

    void WriteProperty(size_t index)
    {
        const InventoryProperty& property = inventory.Table[index];
        const BaseUnit* unit = BaseUnitOf(property.Name);
        std::string stem = property.Name;
        if (unit) {
            stem.replace(stem.size() - unit->From.size(), unit->From.size(), unit->To);
        }
        const std::string name = std::string(prefix) + stem;
        bool hasFamily = false;
        for (size_t i = 0; i < inventory.Cards.size(); ++i) {
            const std::string value =
                Contains(identifiers, property.Name) ? "" : ValueText(property, inventory.Cards[i], unit);
            if (value.empty()) {
                continue;
            }
            if (!std::exchange(hasFamily, true)) {
                Family(name, unit && unit->To.starts_with('_') ? unit->To.substr(1) : "", property.Description);
            }
            Sample(name, {{"card", keys[i]}}, value);
        }
    }

    /// Calls `write` with the labels of each display.
    template <typename Write>
    void ForEachDisplay(Write write) const
    {
        for (size_t i = 0; i < inventory.Cards.size(); ++i) {
            const auto* displays = FindKnown<InventoryDisplays>(inventory, inventory.Cards[i], "displays");
            for (size_t j = 0; displays && j < displays->size(); ++j) {
                const InventoryDisplay& display = (*displays)[j];
                write(std::vector<Label>{{"card", keys[i]}, {"display", display.GdiName.value_or(std::to_string(j + 1))}},
                      display);
            }
        }
    }

    void WriteDisplays()
    {
        constexpr char info[] = "orvel_graphics_display_info";
        Family(info, "", "an active display of a graphics adapter; always 1");
        ForEachDisplay([this, &info](std::vector<Label> labels, const InventoryDisplay& display) {
            const auto size = [](const auto& number) { return number ? std::to_string(*number) : ""; };
            labels.insert(labels.end(), {{"monitor", display.MonitorName.value_or("")},
                                         {"connector", display.Connector.value_or("")},
                                         {"width", size(display.Width)},
                                         {"height", size(display.Height)},
                                         {"primary", display.IsPrimary ? (*display.IsPrimary ? "yes" : "no") : ""}});
            Sample(info, labels, "1");
        });
        constexpr char refresh[] = "orvel_graphics_display_refresh_hertz";
        Family(refresh, "hertz", "refresh rate of an active display");
        ForEachDisplay([this, &refresh](const std::vector<Label>& labels, const InventoryDisplay& display) {
            if (display.RefreshMillihertz) {
                Sample(refresh, labels, ThousandthsText(*display.RefreshMillihertz));
            }
        });
    }

    const Inventory& inventory;
    std::vector<std::string> keys;
    std::map<std::string, int> uses;
    std::string text;
};

} // namespace

std::string InventoryAsOpenMetrics(const Inventory& inventory)
{
    return Writer(inventory).Text();
}

} // namespace orvel::tools
