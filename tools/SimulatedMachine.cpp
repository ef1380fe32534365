#include "SimulatedMachine.h"

#include <windows.h>

#include "ExitStatus.h"
#include "MachineFiles.h"
#include "OrvelSimulation.h"

namespace orvel::tools {

namespace {

HMODULE simulation = nullptr;

template <typename Function>
Function Find(const char* name)
{
    return reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(simulation, name)));
}

} // namespace

std::optional<SimulationProblem> SimulateMachine(const std::string& path)
{
    // It is no part of the product, so the program has to start without it.
    simulation = ::LoadLibraryW((SimulationFolder() / "orvel-simulation.dll").c_str());
    if (!simulation) {
        return SimulationProblem{ExitNoLibrary, "orvel-simulation.dll cannot be loaded (error " +
                                                    std::to_string(::GetLastError()) +
                                                    "): it belongs into the folder \"simulation\" beside this program"};
    }
    const char* problem = "";
    const auto simulate = Find<decltype(&OrvelSimulateMachine)>("OrvelSimulateMachine");
    if (simulate(path.c_str(), &problem) != 0) {
        return SimulationProblem{ExitWrongInput, problem};
    }
    return std::nullopt;
}

std::string SimulationReport()
{
    return Find<decltype(&OrvelSimulationReport)>("OrvelSimulationReport")();
}

} // namespace orvel::tools
