#pragma once

#include "GraphicCardLog.h"

namespace orvel::shared::enumeration {

/// A call of the host's log callback.
struct HostLine {
    GraphicCardLogCallback Callback;
    int Severity;
    const char* Function;
    const char* Message;
    void* Context;
};

/// Makes the call. Discards a C++ exception that the callback throws, whichever compiler built it, and restores the
/// floating-point state.
void CallHost(const HostLine& line) noexcept;

} // namespace orvel::shared::enumeration
