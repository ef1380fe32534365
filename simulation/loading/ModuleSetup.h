#pragma once

#include <optional>
#include <string>

#include <windows.h>

#include "loading/ModuleAccess.h"
#include "machine/Machine.h"

namespace orvel::simulation {

/// Puts the machine's interface DLLs in place: loads the simulated ones that it has, lets the others not be found, and hides
/// the functions it lacks. Takes the DLLs of the machine before it away. Returns what went wrong, if anything.
std::optional<std::string> PutModulesInPlace(const Machine& machine);

/// Gives up everything that PutModulesInPlace holds.
void TakeModulesAway();

/// Adds a reference to opencl.dll in place of the one that the product releases after a refused clGetDeviceInfo. So the
/// DLL stays pinned however many runs there are. Does nothing on a machine that does not pin it.
void AddOpenClReference();

/// Whether the simulated DLL of this name is in the process; for a call of its function, which is a violation where it is
/// not. Only a DLL that the simulation does not hold can be gone.
bool IsLoadedFor(const std::string& call, const wchar_t* dllName);

/// The computer's own DLL in the system folder, or null.
HMODULE SystemModule(const wchar_t* dllName);

/// A function of that DLL, or null; for a simulated DLL that had to stay loaded while the machine in place leaves its
/// interface to the system.
template <typename Function>
Function* SystemFunction(const wchar_t* dllName, const char* functionName)
{
    const HMODULE system = SystemModule(dllName);
    return system ? FunctionIn<Function>(system, functionName) : nullptr;
}

} // namespace orvel::simulation
