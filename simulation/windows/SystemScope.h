#pragma once

namespace orvel::simulation {

/// During its lifetime, calls of this thread reach the computer's own HKEY_LOCAL_MACHINE and DXGI. The computer's own WMI,
/// which some machines query for their rows, needs both: under Wine it runs inside this process.
class SystemScope {
public:
    SystemScope();
    SystemScope(const SystemScope&) = delete;
    SystemScope& operator=(const SystemScope&) = delete;
    ~SystemScope();

    /// Whether this thread is inside a scope.
    static bool IsActive();
};

} // namespace orvel::simulation
