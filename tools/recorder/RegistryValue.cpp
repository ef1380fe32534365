#include "RegistryValue.h"

#include <windows.h>

namespace orvel::recorder {

namespace {

template <typename Number>
std::optional<Number> NumberIn(const std::vector<unsigned char>& data)
{
    Number number = 0;
    if (data.size() != sizeof number) {
        return std::nullopt;
    }
    std::memcpy(&number, data.data(), sizeof number);
    return number;
}

} // namespace

Json RegistryValue(uint32_t type, const std::vector<unsigned char>& data)
{
    if (const auto text = type == REG_SZ ? PlainText(data) : std::nullopt) {
        return *text;
    }
    if (const auto number = type == REG_DWORD ? NumberIn<uint32_t>(data) : std::nullopt) {
        return *number;
    }
    if (const auto number = type == REG_QWORD ? NumberIn<uint64_t>(data) : std::nullopt) {
        return {{"qword", *number}};
    }
    Json value = {{"hex", Hex(data.data(), data.size())}};
    if (type != REG_BINARY) {
        value["type"] = type;
    }
    return value;
}

} // namespace orvel::recorder
