#include "inventory/InventoryText.h"

#include <sstream>

#include "TextLayout.h"
#include "inventory/Facts.h"
#include "inventory/Units.h"

namespace orvel::tools {

namespace {

std::string Listed(const std::vector<std::string>& names)
{
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "" : ", ") + name;
    }
    return text;
}

void WriteCard(std::ostream& out, const Inventory& inventory, size_t index, bool isColoured)
{
    const InventoryCard& card = inventory.Cards[index];
    const std::string name = PrintableText(NameOf(inventory, card));
    out << Bold("Card " + std::to_string(index + 1) + ": " + name, isColoured) << '\n';
    for (const Fact& fact : FactsOf(inventory, card)) {
        WriteEntry(out, fact.Label, fact.Text);
    }
    const std::vector<MissingValues> missing = MissingOf(inventory, card);
    if (!missing.empty()) {
        out << "  " << Bold("Not known", isColoured) << '\n';
    }
    for (const MissingValues& group : missing) {
        WriteWrapped(out, group.Why + ": " + Listed(group.Names), 4);
    }
    out << '\n';
}

void WriteFailedSources(std::ostream& out, const Inventory& inventory)
{
    for (const InventoryEnd& source : inventory.Sources) {
        if (source.Status == "failed") {
            out << EndText(source) << ".\n";
        }
    }
}

} // namespace

std::string InventoryAsText(const Inventory& inventory, bool isColoured)
{
    std::ostringstream out;
    for (size_t i = 0; i < inventory.Cards.size(); ++i) {
        WriteCard(out, inventory, i, isColoured);
    }
    WriteFailedSources(out, inventory);
    const size_t count = inventory.Cards.size();
    out << (count == 0 ? "No graphics adapter" : std::to_string(count) + (count == 1 ? " card" : " cards"))
        << ", asked at depth " << inventory.Depth << '\n';
    return out.str();
}

} // namespace orvel::tools
