#pragma once

#include <string_view>

namespace orvel::simulation {

/// The state of a simulated driver between calls: sessions, handles, objects. A driver declares one of these, with the
/// function that forgets it all, beside its state.
class DriverState {
public:
    /// `forget` runs when a machine is put in place and, where `dllName` is given, when that DLL leaves the process.
    explicit DriverState(void (*forget)(), const wchar_t* dllName = L"");
};

/// For a new machine: forgets the state of every driver.
void ForgetDriverStates();

/// For a DLL that leaves the process.
void ForgetDriverStateOf(std::wstring_view dllName);

} // namespace orvel::simulation
