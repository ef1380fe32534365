#pragma once

#include <cstdint>
#include <string>

namespace orvel::shared::enumeration {

// Text to number, like the standard library's functions: leading white space and a sign are accepted, text
// after the number is ignored. Text without a number throws std::invalid_argument ("invalid stoi argument"), a number
// too large for the type std::out_of_range ("stoi argument out of range"), each with its own function's name. The messages
// are visible to hosts and therefore defined here: those of the standard libraries differ.

/// "stoi"; `base` is 10 or 16.
int32_t ToInt(const std::string& text, int base = 10);

/// "stoul" for Windows' 32-bit unsigned long; `base` is 10 or 16. A minus sign negates modulo 2^32.
uint32_t ToUnsignedLong(const std::string& text, int base = 10);

/// "stoll".
int64_t ToLongLong(const std::string& text);

/// "stof".
float ToFloat(const std::string& text);

/// "stod".
double ToDouble(const std::string& text);

} // namespace orvel::shared::enumeration
