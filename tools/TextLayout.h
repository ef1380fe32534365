#pragma once

#include <ostream>
#include <string>

namespace orvel::tools {

/// Writes a label and a value side by side, the value wrapped at 80 columns. A label that is too long has a line of its own.
void WriteEntry(std::ostream& out, const std::string& label, const std::string& value);

/// Writes a text indented by so many columns and wrapped at 80.
void WriteWrapped(std::ostream& out, const std::string& text, size_t indent);

/// A text as a terminal shows it in bold; unchanged for anything but a terminal.
std::string Bold(const std::string& text, bool isColoured);

} // namespace orvel::tools
