#pragma once

#include <string_view>

namespace orvel::simulation {

/// Resets the state that a simulated driver keeps between calls: sessions, handles, objects. A driver declares one of these
/// beside its state.
class DriverState {
public:
    /// `forget` runs when a machine is put in place and, if `dllName` is given, when that DLL is unloaded.
    explicit DriverState(void (*forget)(), const wchar_t* dllName = L"");
};

/// Resets every driver, for a new machine.
void ForgetDriverStates();

/// Resets the driver of a DLL that is unloaded.
void ForgetDriverStateOf(std::wstring_view dllName);

} // namespace orvel::simulation
