#pragma once

#include <string>
#include <string_view>

namespace orvel::simulation {

/// UTF-8 to UTF-16; invalid UTF-8 becomes replacement characters.
std::wstring ToWide(std::string_view text);

/// UTF-16 to UTF-8; halves of surrogate pairs become replacement characters.
std::string ToUtf8(std::wstring_view text);

/// The text in lower case, independent of the locale. Two texts are equal "ignoring case" if their folded forms are equal.
std::wstring FoldCase(std::wstring_view text);

} // namespace orvel::simulation
