#include "formulas/LocationText.h"

namespace orvel::shared::enumeration {

namespace {

constexpr char digits[] = "0123456789";

/// Position of the comma between the number at `position` and the next number; npos if there are no two such numbers.
std::size_t CommaAfterNumber(const std::string& text, std::size_t position)
{
    const std::size_t end = text.find_first_not_of(digits, position);
    const bool isJoined = end != std::string::npos && end > position && text[end] == ',';
    return isJoined ? end : std::string::npos;
}

bool StartsWithDigit(const std::string& text, std::size_t position)
{
    return position < text.size() && text[position] >= '0' && text[position] <= '9';
}

} // namespace

std::string BusDigits(const std::string& location)
{
    std::size_t bus = location.find_first_of(digits);
    while (bus != std::string::npos) {
        const std::size_t busEnd = CommaAfterNumber(location, bus);
        const std::size_t deviceEnd = busEnd == std::string::npos ? busEnd : CommaAfterNumber(location, busEnd + 1);
        if (deviceEnd != std::string::npos && StartsWithDigit(location, deviceEnd + 1)) {
            return location.substr(bus, busEnd - bus);
        }
        bus = location.find_first_of(digits, location.find_first_not_of(digits, bus));
    }
    return {};
}

} // namespace orvel::shared::enumeration
