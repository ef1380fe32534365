#include "OrvelSimulation.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include <nlohmann/json.hpp>

#include "loading/DriverState.h"
#include "loading/ModuleSetup.h"
#include "machine/CurrentMachine.h"
#include "machine/MachineText.h"
#include "machine/Text.h"
#include "trace/Hangs.h"
#include "trace/Recording.h"
#include "trace/Trace.h"
#include "trace/Violations.h"
#include "windows/RecordedCalls.h"
#include "windows/RedirectedCalls.h"
#include "windows/Registry.h"
#include "wmi/Wmi.h"

namespace {

using namespace orvel::simulation;

// Never destroyed: a caller may still read the texts while the process ends.
std::string& lastProblem = *new std::string;
std::string& lastReport = *new std::string;
std::string& lastRecording = *new std::string;
nlohmann::json& machineName = *new nlohmann::json; // the report stays readable without a machine

int Finish(int result, const std::string& text, const char** problem)
{
    lastProblem = text;
    if (problem) {
        *problem = lastProblem.c_str();
    }
    return result;
}

const char* Dump(const nlohmann::json& content, std::string& text)
{
    text = content.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    return text.c_str();
}

/// The order matters. Some machines query the computer's own WMI, which may load the computer's own dxgi.dll, so the
/// simulated DLLs come first. Both steps may read the computer's registry, so the registry comes last.
std::optional<std::string> PutInPlace(const std::shared_ptr<const Machine>& machine)
{
    SetHangs(machine->hangs); // first: a call that hangs may hold what is needed below
    SetCurrentMachine(machine);
    machineName = machine->name ? nlohmann::json(*machine->name) : nlohmann::json();
    ClearTrace();
    ClearViolations();
    ForgetDriverStates();
    if (auto problem = PutModulesInPlace(*machine)) {
        return problem;
    }
    if (auto problem = PutWmiInPlace(*machine)) {
        return problem;
    }
    if (auto problem = PutRegistryInPlace(*machine)) {
        return problem;
    }
    PutCallsInPlace();
    return std::nullopt;
}

/// Without a machine, what is not restored leads to the computer.
std::shared_ptr<const Machine> NoMachine()
{
    Machine machine;
    machine.pnp.standing = machine.displays.standing = machine.dxcore.standing = Standing::System;
    return std::make_shared<const Machine>(std::move(machine));
}

void TakeAway()
{
    SetHangs({});
    TakeCallsAway();
    TakeRegistryAway();
    TakeWmiAway();
    TakeModulesAway();
    SetCurrentMachine(NoMachine());
}

int Simulate(const std::string& text, const std::string& source, const char** problem)
{
    std::shared_ptr<const Machine> machine;
    try {
        machine = std::make_shared<const Machine>(ReadMachine(text));
    } catch (const MachineError& error) {
        return Finish(ORVEL_SIMULATION_WRONG_MACHINE, source + ": " + error.what(), problem);
    }
    TakeRegistryAway();
    TakeWmiAway();
    if (const auto failure = PutInPlace(machine)) {
        TakeAway();
        return Finish(ORVEL_SIMULATION_NOT_IN_PLACE, source + ": /: " + *failure, problem);
    }
    return Finish(ORVEL_SIMULATION_IN_PLACE, "", problem);
}

} // namespace

int OrvelSimulateMachine(const char* path, const char** problem)
{
    if (!path) {
        return Finish(ORVEL_SIMULATION_WRONG_MACHINE, "the path of the machine file is null", problem);
    }
    std::ifstream file(std::filesystem::path(ToWide(path)), std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    if (!file) {
        return Finish(ORVEL_SIMULATION_WRONG_MACHINE, std::string(path) + ": /: the file cannot be read", problem);
    }
    return Simulate(text, path, problem);
}

int OrvelSimulateMachineText(const char* json, const char* sourceName, const char** problem)
{
    if (!sourceName) {
        return Finish(ORVEL_SIMULATION_WRONG_MACHINE, "the source name of the machine is null", problem);
    }
    if (!json) {
        return Finish(ORVEL_SIMULATION_WRONG_MACHINE, std::string(sourceName) + ": /: the text is null", problem);
    }
    return Simulate(json, sourceName, problem);
}

const char* OrvelSimulationReport(void)
{
    const nlohmann::json content = {{"machine", machineName},
                                    {"touched", CountCalls("") > 0},
                                    {"trace", TraceAsJson()},
                                    {"live", LiveAsJson()},
                                    {"violations", ViolationsAsJson()}};
    return Dump(content, lastReport);
}

int OrvelSimulationCalls(const char* start)
{
    return start ? CountCalls(start) : -1;
}

void OrvelStartRecording(void)
{
    PutRecordedCallsInPlace();
    StartRecording();
}

const char* OrvelEndRecording(void)
{
    TakeRecordedCallsAway();
    return Dump(EndRecording(), lastRecording);
}

void OrvelEndSimulation(void)
{
    TakeAway();
}
