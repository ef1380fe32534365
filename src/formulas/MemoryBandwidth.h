#pragma once

#include <cstdint>

namespace orvel::shared::enumeration {

/// Transfers per clock of an SMBIOS memory type: 1 for codes 1 to 11, 13 to 15, 17 to 20, 24 and 25; 2 for 26
/// to 31; 0 for any other code.
int32_t TransferFactorOrZero(uint32_t memoryType);

/// The same, but throws std::runtime_error ("Argument out of range") for a code without a factor.
int32_t TransferFactor(uint32_t memoryType);

/// Bandwidth from a memory clock in MHz, a width in bits and a transfer factor; 0 if clock or width is 0.
/// Intended: infinite for a factor of 0, that of an unknown memory type.
float MemoryBandwidth(float clockMegahertz, uint32_t widthBits, int32_t factor);

} // namespace orvel::shared::enumeration
