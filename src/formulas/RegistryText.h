#pragma once

#include <cstddef>
#include <string>

namespace orvel::shared::enumeration {

/// The UTF-16 text in the data of a registry value, up to its first NUL. The data come from any driver's setup: they need
/// neither end in a NUL nor hold whole units, and an odd last byte is none.
std::u16string RegistryText(const unsigned char* data, std::size_t bytes);

} // namespace orvel::shared::enumeration
