#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "machine/Node.h"

namespace orvel::simulation {

/// The bytes of pairs of hexadecimal digits, such as "00ff".
std::vector<uint8_t> BytesOf(const Node& digits);

/// A text as UTF-16. A file writes it as text, or, where it is not valid Unicode, as {"hex": its bytes}.
struct WideText {
    std::wstring text;
};
void ReadInto(const Node& node, WideText& target);

/// The bytes of a number, the lowest first.
template <typename Number>
std::vector<uint8_t> BytesOf(Number number)
{
    std::vector<uint8_t> bytes;
    for (size_t index = 0; index < sizeof number; ++index) {
        bytes.push_back(static_cast<uint8_t>(number >> 8 * index));
    }
    return bytes;
}

/// The bytes of a text in UTF-16, with its terminator.
std::vector<uint8_t> BytesOf(const std::wstring& text);

} // namespace orvel::simulation
