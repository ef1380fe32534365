#include "vendors/intel/IntelFillRate.h"

namespace orvel::shared::enumeration {

float IntelFillRate(double clockMegahertz, uint32_t widthBits, int32_t constantArguments, int32_t factor)
{
    if (widthBits == 0 || !(clockMegahertz > 0.0) || constantArguments == 0) {
        return 0.0F;
    }
    const uint32_t units = widthBits / static_cast<uint32_t>(constantArguments); // Intended: whole units only.
    if (units == 0) {
        return 0.0F;
    }
    return static_cast<float>(1e6 * clockMegahertz * (factor * static_cast<double>(units)) / 1e9);
}

} // namespace orvel::shared::enumeration
