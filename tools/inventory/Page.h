#pragma once

#include <string>

#include "inventory/Comparison.h"
#include "inventory/Inventory.h"

namespace orvel::tools {

/// Where a page comes from, as its reader sees it; "" for what is not to be shown.
struct PageOrigin {
    std::string Program; ///< with its version
    std::string Taken;   ///< date and time
    std::string Machine; ///< name of the simulated machine
};

/// The inventory beside the record as one HTML document that loads nothing and runs no script. Every value is escaped.
std::string InventoryAsPage(const Inventory& inventory, const Comparison& comparison, const PageOrigin& origin);

/// The style sheet of the page.
extern const char* const pageStyle;

} // namespace orvel::tools
