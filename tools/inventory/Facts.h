#pragma once

#include <string>
#include <vector>

#include "inventory/Inventory.h"

namespace orvel::tools {

/// What known values say, as people read it, without control characters.
struct Fact {
    std::string Label;
    std::string Text;
};

/// The facts of a card, without its name. Related values share one. A property that this program does not know follows at
/// the end under its own name.
std::vector<Fact> FactsOf(const Inventory& inventory, const InventoryCard& card);

/// "DELL U2720Q (\\.\DISPLAY1), 3840 x 2160, 59.94 Hz, DisplayPort, primary".
std::string DisplayText(const InventoryDisplay& display);

/// Properties whose values are not known for the same reason.
struct MissingValues {
    std::string Why;
    std::vector<std::string> Names;
};

/// A card's values that are not known, by reason, in the order of the table.
std::vector<MissingValues> MissingOf(const Inventory& inventory, const InventoryCard& card);

/// A source's name as people know it.
std::string SourceTitle(const std::string& source);

/// Why an answer holds no value, or how a source has ended, as a sentence without its full stop.
std::string EndText(const InventoryEnd& end);

} // namespace orvel::tools
