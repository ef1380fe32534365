#pragma once

#include <string>

#include "inventory/Inventory.h"

namespace orvel::tools {

/// One section a card in 80 columns: what is known, then what is not, by reason; then the sources that failed, and a
/// summary.
std::string InventoryAsText(const Inventory& inventory, bool isColoured);

} // namespace orvel::tools
