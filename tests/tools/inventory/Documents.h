#pragma once

#include <nlohmann/json.hpp>

#include "inventory/Inventory.h"

namespace orvel::tests {

using OrderedJson = nlohmann::ordered_json;

/// A known value.
OrderedJson Known(OrderedJson value, const char* source = "setupapi");

/// A value that is not known.
OrderedJson Unknown(const char* status, OrderedJson source, const char* reason, OrderedJson code = nullptr);

/// A display, as the document has it; null for what is not given.
OrderedJson DisplayObject(const OrderedJson& known);

/// A table of these properties of the library's: a property whose name is not in it is a text without a unit.
std::vector<tools::InventoryProperty> TableOf(const std::vector<std::string>& names);

/// A document of cards that all have the same properties, with a table of just these.
tools::Inventory InventoryOf(const std::vector<OrderedJson>& cards, const OrderedJson& sources = OrderedJson::array());

/// A card of which everything is known, with all properties of the library.
OrderedJson WholeCard();

} // namespace orvel::tests
