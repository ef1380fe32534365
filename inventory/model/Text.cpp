#include "model/Text.h"

namespace orvel::shared::inventory {

namespace {

constexpr char32_t replacement = 0xFFFD;

bool IsHighSurrogate(char32_t unit)
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}

bool IsLowSurrogate(char32_t unit)
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

/// Takes the first character off a text that is not empty.
char32_t TakeCharacter(std::u16string_view& text)
{
    const char32_t unit = text.front();
    text.remove_prefix(1);
    if (!IsHighSurrogate(unit)) {
        return IsLowSurrogate(unit) ? replacement : unit;
    }
    if (text.empty() || !IsLowSurrogate(text.front())) {
        return replacement;
    }
    const char32_t low = text.front();
    text.remove_prefix(1);
    return 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
}

void Append(std::string& utf8, char32_t character)
{
    const auto continuation = [&](int shift) { utf8 += static_cast<char>(0x80 | ((character >> shift) & 0x3F)); };
    if (character < 0x80) {
        utf8 += static_cast<char>(character);
    } else if (character < 0x800) {
        utf8 += static_cast<char>(0xC0 | (character >> 6));
        continuation(0);
    } else if (character < 0x10000) {
        utf8 += static_cast<char>(0xE0 | (character >> 12));
        continuation(6);
        continuation(0);
    } else {
        utf8 += static_cast<char>(0xF0 | (character >> 18));
        continuation(12);
        continuation(6);
        continuation(0);
    }
}

} // namespace

std::string Utf8Of(std::u16string_view text)
{
    std::string utf8;
    utf8.reserve(text.size());
    while (!text.empty()) {
        Append(utf8, TakeCharacter(text));
    }
    return utf8;
}

} // namespace orvel::shared::inventory
