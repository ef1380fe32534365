#include "Answers.h"

#include <cstring>

#include <windows.h>

#include "platform/TextEncoding.h"

namespace orvel::recorder {

namespace {

bool IsUtf8(std::string_view bytes)
{
    const auto length = static_cast<int>(bytes.size());
    return bytes.empty() || ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, bytes.data(), length, nullptr, 0) != 0;
}

} // namespace

std::string Hex(const unsigned char* data, size_t bytes)
{
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (size_t index = 0; index < bytes; ++index) {
        text += digits[data[index] >> 4];
        text += digits[data[index] & 0xF];
    }
    return text;
}

Json Text(std::string_view bytes)
{
    if (IsUtf8(bytes)) {
        return std::string(bytes);
    }
    return {{"hex", Hex(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size())}};
}

Json Text(std::wstring_view text)
{
    return shared::enumeration::ToUtf8(text);
}

Json Answer(int32_t status, const Json& value, bool isWritten)
{
    if (status == 0) {
        return value;
    }
    Json answer = {{"status", status}};
    if (isWritten) {
        answer["value"] = value;
    }
    return answer;
}

Json TextAnswer(int32_t status, const char* buffer, size_t capacity)
{
    if (status != 0) {
        return {{"status", status}};
    }
    const size_t length = ::strnlen(buffer, capacity);
    Json text = Text(std::string_view(buffer, length));
    return length < capacity ? text : Json{{"status", 0}, {"value", text}, {"writes", "unterminated"}};
}

Json ObjectAnswer(int32_t status, bool isSuccess, const void* object)
{
    if (isSuccess && !object) {
        return {{"status", status}, {"writes", "nothing"}};
    }
    return status;
}

} // namespace orvel::recorder
