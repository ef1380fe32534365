#include "formulas/NumberText.h"

#include <limits>
#include <stdexcept>

#include "formulas/RunFailure.h"

namespace orvel::shared::enumeration {

namespace {

/// Runs a conversion of the standard library, and gives its exceptions the texts of the interface.
template <typename Convert>
auto WithOwnMessages(RunFailure invalid, RunFailure outOfRange, Convert convert)
{
    try {
        return convert();
    } catch (const std::invalid_argument&) {
        throw std::invalid_argument(MessageOf(invalid));
    } catch (const std::out_of_range&) {
        throw std::out_of_range(MessageOf(outOfRange));
    }
}

} // namespace

int32_t ToInt(const std::string& text, int base)
{
    return WithOwnMessages(RunFailure::InvalidStoi, RunFailure::StoiOutOfRange,
                           [&] { return static_cast<int32_t>(std::stoi(text, nullptr, base)); });
}

uint32_t ToUnsignedLong(const std::string& text, int base)
{
    // Signed 64 bits hold every valid value before negation, independent of the width of long.
    const int64_t value = WithOwnMessages(RunFailure::InvalidStoul, RunFailure::StoulOutOfRange,
                                          [&] { return std::stoll(text, nullptr, base); });
    constexpr int64_t largest = std::numeric_limits<uint32_t>::max();
    if (value > largest || value < -largest) {
        throw std::out_of_range(MessageOf(RunFailure::StoulOutOfRange));
    }
    return static_cast<uint32_t>(value);
}

int64_t ToLongLong(const std::string& text)
{
    return WithOwnMessages(RunFailure::InvalidStoll, RunFailure::StollOutOfRange,
                           [&] { return static_cast<int64_t>(std::stoll(text)); });
}

float ToFloat(const std::string& text)
{
    return WithOwnMessages(RunFailure::InvalidStof, RunFailure::StofOutOfRange, [&] { return std::stof(text); });
}

double ToDouble(const std::string& text)
{
    return WithOwnMessages(RunFailure::InvalidStod, RunFailure::StodOutOfRange, [&] { return std::stod(text); });
}

} // namespace orvel::shared::enumeration
