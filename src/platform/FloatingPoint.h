#pragma once

#include <cfenv>

#include <xmmintrin.h>

namespace orvel::shared::enumeration {

/// Masks every floating-point trap, and restores the thread's previous state (MXCSR and x87) on destruction. If a host has
/// unmasked traps, an intended division by zero would otherwise end its process.
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
