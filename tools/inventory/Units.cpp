#include "inventory/Units.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace orvel::tools {

namespace {

/// `number` with a point before its last `decimals` digits, without trailing zeros.
std::string WithPoint(uint64_t number, size_t decimals)
{
    std::string digits = std::to_string(number);
    digits.insert(0, digits.size() <= decimals ? decimals + 1 - digits.size() : 0, '0');
    std::string text = digits.substr(0, digits.size() - decimals) + "." + digits.substr(digits.size() - decimals);
    text.erase(text.find_last_not_of('0') + 1);
    return text.ends_with('.') ? text.substr(0, text.size() - 1) : text;
}

/// The quotient, rounded to the nearest, without the overflow of adding first.
uint64_t RoundedQuotient(uint64_t dividend, uint64_t divisor)
{
    return dividend / divisor + (dividend % divisor >= divisor - divisor / 2 ? 1 : 0);
}

} // namespace

std::string BytesText(uint64_t bytes)
{
    constexpr const char* units[] = {" bytes", " KiB", " MiB", " GiB", " TiB", " PiB", " EiB"};
    size_t unit = 0;
    uint64_t whole = bytes;
    uint64_t divisor = 1;
    while (whole >= 1024) {
        whole /= 1024;
        divisor *= 1024;
        ++unit;
    }
    const uint64_t tenths = whole * 10 + RoundedQuotient(bytes % divisor * 10, divisor); // the rest has at most 60 bits
    return WithPoint(tenths, 1) + units[unit];
}

std::string MegahertzText(uint64_t megahertz)
{
    return megahertz < 1000 ? std::to_string(megahertz) + " MHz" : WithPoint(RoundedQuotient(megahertz, 10), 2) + " GHz";
}

std::string ThousandthsText(uint64_t thousandths)
{
    return WithPoint(thousandths, 3);
}

std::string RefreshText(uint64_t millihertz)
{
    return WithPoint(RoundedQuotient(millihertz, 10), 2) + " Hz";
}

std::string IdentifierText(uint64_t identifier)
{
    if (identifier <= 0xFFFF || identifier > 0xFFFFFFFF) {
        return HexText(identifier, 4);
    }
    std::string letters;
    for (int shift = 0; shift < 32; shift += 8) {
        letters += static_cast<char>((identifier >> shift) & 0xFF);
    }
    const bool isText =
        std::all_of(letters.begin(), letters.end(), [](char letter) { return letter > ' ' && letter < 0x7F; });
    return isText ? letters : HexText(identifier, 8);
}

std::string HexText(uint64_t number, int digits)
{
    char text[24];
    std::snprintf(text, sizeof text, "%0*llX", digits, static_cast<unsigned long long>(number));
    return text;
}

std::string CodeText(int64_t code)
{
    constexpr int64_t firstFailure = 0x80000000; // of an HRESULT
    return code >= firstFailure && code <= 0xFFFFFFFF ? "0x" + HexText(static_cast<uint64_t>(code), 8)
                                                      : std::to_string(code);
}

std::string PrintableText(const std::string& text)
{
    constexpr std::string_view replacement = "\xEF\xBF\xBD";
    std::string printable;
    for (size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool isUpperControl = byte == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0;
        if (isUpperControl) {
            ++i; // U+0080 to U+009F in UTF-8
        }
        if (byte < 0x20 || byte == 0x7F || isUpperControl) {
            printable += replacement;
        } else {
            printable += text[i];
        }
    }
    return printable;
}

} // namespace orvel::tools
