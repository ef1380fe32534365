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

bool IsUnicode(const wchar_t* text, size_t characters)
{
    const auto length = static_cast<int>(characters);
    return characters == 0 ||
           ::WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, text, length, nullptr, 0, nullptr, nullptr) != 0;
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

Json WideText(std::wstring_view text)
{
    if (IsUnicode(text.data(), text.size())) {
        return Text(text);
    }
    return {{"hex", Hex(reinterpret_cast<const unsigned char*>(text.data()), text.size() * sizeof(wchar_t))}};
}

std::optional<std::string> PlainText(const std::vector<unsigned char>& data)
{
    std::wstring text(data.size() / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), data.data(), text.size() * sizeof(wchar_t));
    const bool isPlain = data.size() % sizeof(wchar_t) == 0 && !text.empty() && text.find(L'\0') == text.size() - 1 &&
                         IsUnicode(text.data(), text.size());
    return isPlain ? std::optional(shared::enumeration::ToUtf8(text.substr(0, text.size() - 1))) : std::nullopt;
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
