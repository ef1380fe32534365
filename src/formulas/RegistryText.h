#pragma once

#include <cstddef>
#include <string>

namespace orvel::shared::enumeration {

/// The UTF-16 text in the data of a registry value, up to its first NUL. Any driver's setup can write the data, so
/// the final NUL may be missing; a trailing odd byte is ignored.
std::u16string RegistryText(const unsigned char* data, std::size_t bytes);

} // namespace orvel::shared::enumeration
