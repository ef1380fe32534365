#include "LoadedSimulation.h"

#include "MachineFiles.h"
#include "platform/Handles.h"

namespace orvel::tools {

namespace {

/// A function of the loaded DLL.
template <typename Function>
Function* Find(const char* name)
{
    return shared::enumeration::FindFunction<Function*>(::GetModuleHandleW(L"orvel-simulation.dll"), name);
}

} // namespace

unsigned long LoadSimulation()
{
    return ::LoadLibraryW((SimulationFolder() / "orvel-simulation.dll").c_str()) ? ERROR_SUCCESS : ::GetLastError();
}

int SimulateMachine(const std::string& path, std::string& problem)
{
    const char* text = "";
    const int result = Find<decltype(OrvelSimulateMachine)>("OrvelSimulateMachine")(path.c_str(), &text);
    problem = text;
    return result;
}

int SimulateMachineText(const std::string& json, const char* sourceName, std::string& problem)
{
    const char* text = "";
    const int result = Find<decltype(OrvelSimulateMachineText)>("OrvelSimulateMachineText")(json.c_str(), sourceName, &text);
    problem = text;
    return result;
}

std::string SimulationReport()
{
    return Find<decltype(OrvelSimulationReport)>("OrvelSimulationReport")();
}

void StartRecording()
{
    Find<decltype(OrvelStartRecording)>("OrvelStartRecording")();
}

std::string EndRecording()
{
    return Find<decltype(OrvelEndRecording)>("OrvelEndRecording")();
}

int SimulationCalls(const char* start)
{
    return Find<decltype(OrvelSimulationCalls)>("OrvelSimulationCalls")(start);
}

} // namespace orvel::tools
