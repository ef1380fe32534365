#pragma once

#include <string>
#include <string_view>

namespace orvel::shared::inventory {

/// UTF-16 text as UTF-8. A surrogate without its other half becomes U+FFFD.
std::string Utf8Of(std::u16string_view text);

} // namespace orvel::shared::inventory
