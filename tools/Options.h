#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace orvel::tools {

/// What the program is to show.
enum class Mode { Cards, Explain, Doctor, ListMachines };

struct Options {
    Mode Show = Mode::Cards;
    bool Json = false;
    bool Brief = false;
    bool Log = false;
    std::optional<std::string> Machine; ///< a file, or the short name of a shipped machine
    std::optional<std::string> Output;  ///< a file instead of standard output
};

/// A run that ends with the command line: what to print, and the exit status.
struct Ending {
    int Status;
    std::string Text;
};

/// Reads the command line (UTF-8, without the program's name).
std::variant<Options, Ending> ParseOptions(const std::vector<std::string>& arguments);

} // namespace orvel::tools
