#pragma once

#include <string>

namespace orvel::shared::enumeration {

/// Chip name derived from a card name: the card name without the manufacturer's words and the trademark sign, if the result
/// consists of letters, digits, spaces, "-", "_" and "." and ends in a digit; otherwise the unchanged card name. Intended:
/// removing "(r)" and "(R)" removes every r and every R, and leaves the brackets.
std::string IntelChipName(const std::string& cardName);

/// The type of an adapter's digital-to-analogue converter if it is a word (a letter, then letters, digits and spaces, two
/// characters at least); "" for any other text.
std::string IntelGpuType(const std::string& adapterDacType);

/// A number of bytes, as decimal text, in MiB; "" when it is below 1. Throws std::invalid_argument ("invalid stoll
/// argument") and std::out_of_range ("stoll argument out of range").
std::string IntelMemorySize(const std::string& bytes);

} // namespace orvel::shared::enumeration
