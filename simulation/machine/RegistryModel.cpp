#include "machine/RegistryModel.h"

#include <algorithm>
#include <charconv>

namespace orvel::simulation {

namespace {

bool IsHexDigit(char letter)
{
    return std::string_view("0123456789abcdefABCDEF").find(letter) != std::string_view::npos;
}

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

RegistryValue ValueOf(const Node& node)
{
    if (node.IsText()) {
        return node.Text();
    }
    if (node.IsNumber()) {
        return static_cast<uint32_t>(node.Whole(0, UINT32_MAX));
    }
    if (!node.HasKey("hex")) {
        node.Refuse("expected a text, a number or {\"hex\": digits}");
    }
    std::vector<uint8_t> bytes;
    node.ReadFields({{"hex", [&bytes](const Node& digits) { bytes = BytesOf(digits); }}});
    return bytes;
}

} // namespace

void ReadInto(const Node& node, RegistryModel& target)
{
    for (const auto& [path, key] : node.Members()) {
        if (path.empty() || path.starts_with('\\')) {
            key.Refuse("expected a key path below HKEY_LOCAL_MACHINE, without a backslash in front");
        }
        auto& values = target.keys.emplace_back(RegistryKeyModel{path, {}}).values;
        for (const auto& [name, value] : key.Members()) {
            values.emplace_back(name, ValueOf(value));
        }
    }
}

} // namespace orvel::simulation
