#pragma once

#include <dxgi.h>

namespace orvel::shared::enumeration {

/// The identifier of IDXGIFactory. Defined here because not every compiler's import library has it.
constexpr GUID idxgiFactoryId = {0x7B7166EC, 0x21C7, 0x44AE, {0xB2, 0x1A, 0xC9, 0xAE, 0x32, 0x1A, 0xE3, 0x69}};

} // namespace orvel::shared::enumeration
