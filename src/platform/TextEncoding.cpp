#include "platform/TextEncoding.h"

#include <windows.h>

namespace orvel::shared::enumeration {

std::string ToUtf8(std::wstring_view text)
{
    const int units = static_cast<int>(text.size());
    const int bytes = ::WideCharToMultiByte(CP_UTF8, 0, text.data(), units, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<size_t>(bytes), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text.data(), units, utf8.data(), bytes, nullptr, nullptr);
    return utf8;
}

std::wstring ToUtf16(const std::string& text)
{
    const int units = ::MultiByteToWideChar(CP_UTF8, 0, text.c_str(), -1, nullptr, 0);
    if (units <= 0) {
        return {};
    }
    std::wstring utf16(static_cast<size_t>(units), L'\0');
    ::MultiByteToWideChar(CP_UTF8, 0, text.c_str(), -1, utf16.data(), units);
    utf16.pop_back(); // the terminator
    return utf16;
}

} // namespace orvel::shared::enumeration
