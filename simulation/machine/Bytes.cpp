#include "machine/Bytes.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "machine/Text.h"

namespace orvel::simulation {

namespace {

bool IsHexDigit(char letter)
{
    return std::string_view("0123456789abcdefABCDEF").find(letter) != std::string_view::npos;
}

} // namespace

std::vector<uint8_t> BytesOf(const Node& node)
{
    const std::string digits = node.Text();
    if (digits.size() % 2 != 0 || !std::ranges::all_of(digits, IsHexDigit)) {
        node.Refuse("expected pairs of hexadecimal digits");
    }
    std::vector<uint8_t> bytes(digits.size() / 2);
    for (size_t index = 0; index < bytes.size(); ++index) {
        std::from_chars(&digits[2 * index], &digits[2 * index] + 2, bytes[index], 16);
    }
    return bytes;
}

std::vector<uint8_t> BytesOf(const std::wstring& text)
{
    std::vector<uint8_t> bytes((text.size() + 1) * sizeof(wchar_t));
    std::memcpy(bytes.data(), text.c_str(), bytes.size());
    return bytes;
}

void ReadInto(const Node& node, WideText& target)
{
    if (!node.IsObject()) {
        target.text = ToWide(node.Text());
        return;
    }
    const auto read = [&target](const Node& digits) {
        const auto bytes = BytesOf(digits);
        if (bytes.size() % sizeof(wchar_t) != 0) {
            digits.Refuse("expected the bytes of UTF-16, two for each character");
        }
        target.text.resize(bytes.size() / sizeof(wchar_t));
        std::memcpy(target.text.data(), bytes.data(), bytes.size());
    };
    node.ReadFields({{"hex", read}});
}

} // namespace orvel::simulation
