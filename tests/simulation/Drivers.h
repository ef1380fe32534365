#pragma once

#include "platform/Handles.h"
#include "support/SimulatedRun.h"

namespace orvel::tests {

/// Loads a driver's DLL by its name, and looks up its functions, as a program does.
class Driver {
public:
    explicit Driver(const wchar_t* name) : module(::LoadLibraryW(name)) {}

    HMODULE Module() const { return module.get(); }

    void* Find(const char* function) const { return reinterpret_cast<void*>(::GetProcAddress(module.get(), function)); }

    /// Calls a function that returns a status.
    template <typename... Arguments>
    int32_t Call(const char* function, Arguments... arguments) const
    {
        return reinterpret_cast<int32_t (*)(Arguments...)>(Find(function))(arguments...);
    }

private:
    shared::enumeration::ModuleHandle module;
};

/// Calls an object's function by its slot in the object's table.
template <typename Result = int32_t, typename... Arguments>
Result CallSlot(void* object, size_t slot, Arguments... arguments)
{
    void* const function = (*static_cast<void***>(object))[slot];
    return reinterpret_cast<Result (*)(void*, Arguments...)>(function)(object, arguments...);
}

/// The texts of violations.
using Violations = std::vector<std::string>;

} // namespace orvel::tests
