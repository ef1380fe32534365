#include "loading/DriverState.h"

#include <utility>
#include <vector>

namespace orvel::simulation {

namespace {

using States = std::vector<std::pair<std::wstring_view, void (*)()>>;

/// Created on first use, because static objects of the drivers add to it.
States& AllStates()
{
    static auto* const states = new States;
    return *states;
}

} // namespace

DriverState::DriverState(void (*forget)(), const wchar_t* dllName)
{
    AllStates().emplace_back(dllName, forget);
}

void ForgetDriverStates()
{
    for (const auto& [name, forget] : AllStates()) {
        forget();
    }
}

void ForgetDriverStateOf(std::wstring_view dllName)
{
    for (const auto& [name, forget] : AllStates()) {
        if (name == dllName) {
            forget();
        }
    }
}

} // namespace orvel::simulation
