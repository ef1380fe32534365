#pragma once

#include <cstdint>
#include <string>

namespace orvel::tools {

// Numbers of the inventory as people read them.

/// "24 GiB", "7.9 GiB", "128 MiB", with at most one decimal.
std::string BytesText(uint64_t bytes);

/// "810 MHz", "2.52 GHz".
std::string MegahertzText(uint64_t megahertz);

/// A thousandth's decimal number without trailing zeros: 59940 is "59.94", 60000 is "60".
std::string ThousandthsText(uint64_t thousandths);

/// "59.94 Hz".
std::string RefreshText(uint64_t millihertz);

/// A PCI identifier as 4 hexadecimal digits; that of an ACPI device as its four characters.
std::string IdentifierText(uint64_t identifier);

/// A number in at least so many hexadecimal digits.
std::string HexText(uint64_t number, int digits);

/// The number of a failure: an HRESULT in hexadecimal digits, any other one in decimal digits.
std::string CodeText(int64_t code);

/// A text on one line that cannot control a terminal: each control character becomes U+FFFD.
std::string PrintableText(const std::string& text);

} // namespace orvel::tools
