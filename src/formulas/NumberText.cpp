#include "formulas/NumberText.h"

#include <limits>
#include <stdexcept>

namespace orvel::shared::enumeration {

namespace {

[[noreturn]] void ThrowInvalid(const char* function)
{
    throw std::invalid_argument(std::string("invalid ") + function + " argument");
}

[[noreturn]] void ThrowOutOfRange(const char* function)
{
    throw std::out_of_range(std::string(function) + " argument out of range");
}

/// Runs a conversion of the standard library and gives its exceptions the texts that hosts are promised.
template <typename Convert>
auto WithOwnMessages(const char* function, Convert convert)
{
    try {
        return convert();
    } catch (const std::invalid_argument&) {
        ThrowInvalid(function);
    } catch (const std::out_of_range&) {
        ThrowOutOfRange(function);
    }
}

} // namespace

int32_t ToInt(const std::string& text, int base)
{
    return WithOwnMessages("stoi", [&] { return static_cast<int32_t>(std::stoi(text, nullptr, base)); });
}

uint32_t ToUnsignedLong(const std::string& text, int base)
{
    // Signed 64 bits hold every value that the sign may turn into a valid one, whatever the width of long is here.
    const int64_t value = WithOwnMessages("stoul", [&] { return std::stoll(text, nullptr, base); });
    constexpr int64_t largest = std::numeric_limits<uint32_t>::max();
    if (value > largest || value < -largest) {
        ThrowOutOfRange("stoul");
    }
    return static_cast<uint32_t>(value);
}

int64_t ToLongLong(const std::string& text)
{
    return WithOwnMessages("stoll", [&] { return static_cast<int64_t>(std::stoll(text)); });
}

float ToFloat(const std::string& text)
{
    return WithOwnMessages("stof", [&] { return std::stof(text); });
}

double ToDouble(const std::string& text)
{
    return WithOwnMessages("stod", [&] { return std::stod(text); });
}

} // namespace orvel::shared::enumeration
