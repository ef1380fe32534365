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

/// Makes the call. A C++ exception that the callback throws, whichever compiler built it, ends here; the floating-point
/// state that the callback leaves behind does too.
void CallHost(const HostLine& line) noexcept;

} // namespace orvel::shared::enumeration
