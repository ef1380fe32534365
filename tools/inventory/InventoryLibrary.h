#pragma once

#include <string>
#include <variant>
#include <vector>

#include "Options.h"
#include "OrvelInventory.h"
#include "inventory/Inventory.h"

namespace orvel::tools {

/// The functions of orvel-graphic-cards-inventory.dll that this program uses.
struct InventoryLibrary {
    decltype(&OrvelInventoryVersion) Version;
    decltype(&OrvelInventoryTake) Take;
    decltype(&OrvelInventoryFree) Free;
    decltype(&OrvelInventoryPropertyCount) PropertyCount;
    decltype(&OrvelInventoryGetProperty) GetProperty;
    decltype(&OrvelInventoryToJson) ToJson;
    decltype(&OrvelInventoryFreeText) FreeText;
};

/// What a snapshot says.
struct InventorySnapshot {
    std::string Full; ///< the library's documents
    std::string Flat;
    std::vector<InventoryProperty> Table;
};

/// Loads the DLL from the program's folder, for the rest of the process; or says why it cannot be used. The program is not
/// linked against it, so that it starts without.
std::variant<InventoryLibrary, std::string> LoadInventoryLibrary();

/// Takes a snapshot, or says why there is none.
std::variant<InventorySnapshot, std::string> TakeInventory(const InventoryLibrary& library, const InventoryOptions& options);

} // namespace orvel::tools
