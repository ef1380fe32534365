#pragma once

#include <nlohmann/json.hpp>

#include "inventory/Inventory.h"

namespace orvel::tests {

using OrderedJson = nlohmann::ordered_json;

/// A known value.
OrderedJson Known(OrderedJson value, const char* source = "setupapi");

/// A value that is not known.
OrderedJson Unknown(const char* status, OrderedJson source, const char* reason, OrderedJson code = nullptr);

/// A display in the form of the document; null for values that are not given.
OrderedJson DisplayObject(const OrderedJson& known);

/// A table of these properties, described as in the library. An unknown name is a text without a unit.
std::vector<tools::InventoryProperty> TableOf(const std::vector<std::string>& names);

/// A document of cards that all have the same properties, with a table of these properties.
tools::Inventory InventoryOf(const std::vector<OrderedJson>& cards, const OrderedJson& sources = OrderedJson::array());

/// A card with a known value for every property of the library.
OrderedJson WholeCard();

} // namespace orvel::tests
