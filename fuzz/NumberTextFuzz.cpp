// Any text is converted to the same number as by the C library, or refused with the documented exception.

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <stdexcept>

#include "Promised.h"
#include "formulas/NumberText.h"

using namespace orvel::fuzz;
using namespace orvel::shared::enumeration;

namespace {

struct Words {
    std::string Invalid;
    std::string OutOfRange;
};

Words WordsOf(const std::string& function)
{
    return {"invalid " + function + " argument", function + " argument out of range"};
}

/// Runs a conversion; false if it is refused with a documented exception.
template <typename Number, typename Convert>
bool Converts(const char* function, Number& number, Convert convert)
{
    const Words words = WordsOf(function);
    return Succeeds([&] { number = convert(); },
                    {{typeid(std::invalid_argument), words.Invalid}, {typeid(std::out_of_range), words.OutOfRange}});
}

/// Reads a whole number with the C library; false if there is none, or none that fits 64 bits.
bool ReadWhole(const std::string& text, int base, long long& number)
{
    char* end = nullptr;
    errno = 0;
    number = std::strtoll(text.c_str(), &end, base);
    return end != text.c_str() && errno == 0;
}

void CheckWhole(const std::string& text, int base)
{
    long long expected = 0;
    const bool isWhole = ReadWhole(text, base, expected);
    int32_t narrow = 0;
    const bool isNarrow = expected >= std::numeric_limits<int32_t>::min() && expected <= std::numeric_limits<int32_t>::max();
    Require(Converts("stoi", narrow, [&] { return ToInt(text, base); }) == (isWhole && isNarrow), "32 bits with a sign");
    Require(!isWhole || !isNarrow || narrow == expected, "ToInt's number");
    uint32_t natural = 0;
    constexpr long long largest = std::numeric_limits<uint32_t>::max();
    const bool isNatural = expected >= -largest && expected <= largest;
    Require(Converts("stoul", natural, [&] { return ToUnsignedLong(text, base); }) == (isWhole && isNatural), "32 bits");
    Require(!isWhole || !isNatural || natural == static_cast<uint32_t>(expected), "ToUnsignedLong's number");
    if (base == 10) {
        int64_t wide = 0;
        Require(Converts("stoll", wide, [&] { return ToLongLong(text); }) == isWhole, "64 bits with a sign");
        Require(!isWhole || wide == expected, "ToLongLong's number");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    const std::string text = Text(data, size);
    CheckWhole(text, 10);
    CheckWhole(text, 16);
    float single = 0.0F;
    double wide = 0.0;
    const bool isSingle = Converts("stof", single, [&] { return ToFloat(text); });
    const bool isWide = Converts("stod", wide, [&] { return ToDouble(text); });
    Require(!isSingle || isWide, "what fits a float fits a double");
    Require(!isSingle || std::isnan(wide) || static_cast<float>(wide) == single ||
                std::abs(wide - single) <= std::abs(wide) * 1e-6,
            "the same number");
    return 0;
}
