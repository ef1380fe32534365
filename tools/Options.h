#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace orvel::tools {

struct Options {
    bool Json = false;
    bool Log = false;
    std::optional<std::string> Machine;
};

/// A run that ends with the command line: what to print, and the exit status.
struct Ending {
    int Status;
    std::string Text;
};

/// Reads the command line (UTF-8, without the program's name).
std::variant<Options, Ending> ParseOptions(const std::vector<std::string>& arguments);

} // namespace orvel::tools
