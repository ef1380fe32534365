#pragma once

#include <cstdint>

namespace orvel::shared::enumeration {

/// Fill rate in 10^9 units per second of a GPU with this clock, the machine's memory width, the device's count
/// of constant arguments and the transfer factor of the memory (1 for pixels). 0 when clock or width is 0, and when the
/// device reports no arguments. Intended: the number of units is the integer quotient of width and arguments.
float IntelFillRate(double clockMegahertz, uint32_t widthBits, int32_t constantArguments, int32_t factor);

} // namespace orvel::shared::enumeration
