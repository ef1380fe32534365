#pragma once

#include <string>
#include <string_view>

namespace orvel::shared::enumeration {

/// UTF-16 text as UTF-8; "" when it is empty.
std::string ToUtf8(std::wstring_view text);

/// UTF-8 text as UTF-16, up to its first NUL.
std::wstring ToUtf16(const std::string& text);

} // namespace orvel::shared::enumeration
