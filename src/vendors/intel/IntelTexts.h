#pragma once

#include <string>

namespace orvel::shared::enumeration {

/// Chip name made from a card name: the words of the maker and the trademark sign are taken out, and what is left is the
/// chip name when it consists of letters, digits, spaces, "-", "_" and "." and ends in a digit; otherwise it is the card
/// name as it stands. Intended: taking out "(r)" and "(R)" takes out every r and every R, and leaves the brackets.
std::string IntelChipName(const std::string& cardName);

/// The kind of an adapter's digital-analogue converter where it is a word (a letter, then letters, digits and spaces, two
/// characters at least); "" for any other text.
std::string IntelGpuType(const std::string& adapterDacType);

/// A number of bytes, as decimal text, in MiB; "" when it is below 1. Throws std::invalid_argument ("invalid stoll
/// argument") and std::out_of_range ("stoll argument out of range").
std::string IntelMemorySize(const std::string& bytes);

} // namespace orvel::shared::enumeration
