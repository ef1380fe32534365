#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace orvel::tools {

/// What the program is to show.
enum class Mode { Cards, Explain, Doctor, ListMachines, Inventory, Record };

/// The forms of the inventory.
enum class InventoryFormat { Text, Json, Flat, OpenMetrics, Ndjson, Csv };

/// What the inventory is asked for, and how it is written.
struct InventoryOptions {
    InventoryFormat Format = InventoryFormat::Text;
    uint32_t Depth = 0;               ///< as in OrvelInventory.h; 0: the library's default
    uint32_t TimeoutMilliseconds = 0; ///< 0: the library's default
    bool IsWakingAllowed = false;
    bool IsCompared = false;         ///< with the record
    std::optional<std::string> Page; ///< the file of the HTML page
};

struct Options {
    Mode Show = Mode::Cards;
    bool Json = false;
    bool Brief = false;
    bool Log = false;
    InventoryOptions Inventory;
    std::optional<std::string> Machine;   ///< a file, or the short name of a shipped machine
    std::optional<std::string> Output;    ///< a file instead of standard output
    std::optional<std::string> Recording; ///< the machine file that is to be written
    bool Force = false;                   ///< replace that file
    bool RecordIdentifiers = false;
};

/// A run that ends with the command line: what to print, and the exit status.
struct Ending {
    int Status;
    std::string Text;
};

/// Reads the command line (UTF-8, without the program's name).
std::variant<Options, Ending> ParseOptions(const std::vector<std::string>& arguments);

} // namespace orvel::tools
