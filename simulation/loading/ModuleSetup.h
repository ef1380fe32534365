#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <windows.h>

#include "loading/ModuleAccess.h"
#include "machine/Machine.h"

namespace orvel::simulation {

/// Puts the machine's interface DLLs in place of the previous machine's: loads the simulated DLLs that the machine has,
/// makes loading the others fail, and hides the functions that it lacks. Returns the reason of a failure.
std::optional<std::string> PutModulesInPlace(const Machine& machine);

/// Releases everything that PutModulesInPlace holds.
void TakeModulesAway();

/// Adds a reference to opencl.dll that replaces the one that the product releases after a failed clGetDeviceInfo, so the DLL
/// stays pinned however many runs there are. Does nothing if the machine does not pin it.
void AddOpenClReference();

/// Whether the simulated DLL of this name is loaded. If it is not, the call of its function is a violation. Only a DLL that
/// the simulation does not hold can be unloaded.
bool IsLoadedFor(const std::string& call, const wchar_t* dllName);

/// The origin of a DLL on the machine in place, by its name in lower case; empty for one that is no interface's.
std::optional<Standing> StandingOf(std::wstring_view dllName);

/// The simulated DLL of a name, loaded once more; null, with the last error, where it cannot be loaded.
HMODULE LoadSimulated(std::wstring_view dllName);

/// The computer's own DLL in the system folder, or null.
HMODULE SystemModule(const wchar_t* dllName);

/// A function of that DLL, or null. For a simulated DLL that had to stay loaded although the machine keeps the computer's
/// own interface.
template <typename Function>
Function* SystemFunction(const wchar_t* dllName, const char* functionName)
{
    const HMODULE system = SystemModule(dllName);
    return system ? FunctionIn<Function>(system, functionName) : nullptr;
}

} // namespace orvel::simulation
