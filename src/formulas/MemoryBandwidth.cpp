#include "formulas/MemoryBandwidth.h"

#include <stdexcept>

#include "formulas/RunFailure.h"

namespace orvel::shared::enumeration {

int32_t TransferFactorOrZero(uint32_t memoryType)
{
    const auto isBetween = [memoryType](uint32_t first, uint32_t last) { return memoryType >= first && memoryType <= last; };
    if (isBetween(1, 11) || isBetween(13, 15) || isBetween(17, 20) || isBetween(24, 25)) {
        return 1;
    }
    if (isBetween(26, 31)) {
        return 2;
    }
    return 0;
}

int32_t TransferFactor(uint32_t memoryType)
{
    if (const int32_t factor = TransferFactorOrZero(memoryType); factor != 0) {
        return factor;
    }
    throw std::runtime_error(MessageOf(RunFailure::NoTransferFactor));
}

float MemoryBandwidth(float clockMegahertz, uint32_t widthBits, int32_t factor)
{
    const float bitRate = static_cast<float>(widthBits) * clockMegahertz;
    if (!(clockMegahertz > 0.0F) || !(bitRate > 0.0F)) {
        return 0.0F;
    }
    const float bandwidth = bitRate / static_cast<float>(factor * 8);
    return bandwidth > 0.0F ? bandwidth / 1000.0F : 0.0F;
}

} // namespace orvel::shared::enumeration
