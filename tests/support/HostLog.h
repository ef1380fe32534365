#pragma once

#include "SimulatedRun.h"

namespace orvel::tests {

/// Collects the log lines of the product during its lifetime, as "severity function: message" without the function's
/// namespace.
class HostLog {
public:
    HostLog();
    HostLog(const HostLog&) = delete;
    HostLog& operator=(const HostLog&) = delete;
    ~HostLog();

    LogLines Lines;
};

} // namespace orvel::tests
