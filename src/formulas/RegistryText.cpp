#include "formulas/RegistryText.h"

#include <algorithm>
#include <cstring>

namespace orvel::shared::enumeration {

std::u16string RegistryText(const unsigned char* data, std::size_t bytes)
{
    std::u16string text(bytes / sizeof(char16_t), u'\0');
    if (!text.empty()) {
        std::memcpy(text.data(), data, text.size() * sizeof(char16_t));
    }
    text.resize(std::min(text.find(u'\0'), text.size()));
    return text;
}

} // namespace orvel::shared::enumeration
