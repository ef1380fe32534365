#include "machine/Text.h"

#include <windows.h>

namespace orvel::simulation {

std::wstring ToWide(std::string_view text)
{
    const int size = static_cast<int>(text.size());
    std::wstring wide(static_cast<size_t>(MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0)), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), static_cast<int>(wide.size()));
    return wide;
}

std::string ToUtf8(std::wstring_view text)
{
    const int size = static_cast<int>(text.size());
    const int length = WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<size_t>(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), size, bytes.data(), length, nullptr, nullptr);
    return bytes;
}

std::wstring FoldCase(std::wstring_view text)
{
    std::wstring folded(text);
    if (!folded.empty()) {
        LCMapStringW(LOCALE_INVARIANT, LCMAP_LOWERCASE, text.data(), static_cast<int>(text.size()), folded.data(),
                     static_cast<int>(folded.size()));
    }
    return folded;
}

} // namespace orvel::simulation
