#pragma once

#include <cfenv>

#include <xmmintrin.h>

namespace orvel::shared::enumeration {

/// Masks every floating-point trap, and restores the thread's former state (MXCSR and the x87 unit's) when it goes out of
/// use. A host may have unmasked traps; a division by zero that is wanted here would then end its process.
class MaskedFloatingPoint {
public:
    MaskedFloatingPoint() noexcept
    {
        std::feholdexcept(&former);
        _mm_setcsr(formerSse | everySseTrap); // MinGW's feholdexcept masks the x87 unit's only
    }
    MaskedFloatingPoint(const MaskedFloatingPoint&) = delete;
    MaskedFloatingPoint& operator=(const MaskedFloatingPoint&) = delete;
    ~MaskedFloatingPoint()
    {
        std::fesetenv(&former);
        _mm_setcsr(formerSse);
    }

private:
    static constexpr unsigned int everySseTrap = 0x1F80;

    const unsigned int formerSse = _mm_getcsr();
    std::fenv_t former;
};

} // namespace orvel::shared::enumeration
