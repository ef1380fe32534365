#pragma once

#include <string>

#include "OrvelSimulation.h"

namespace orvel::tools {

// orvel-simulation.dll, for programs that have to start without it.

/// Loads it for the rest of the process, from the folder "simulation" beside this program or, in the package, beside the
/// program's folder. Returns 0, or Windows's error.
unsigned long LoadSimulation();

/// Puts this process on a simulated machine, given as a file (UTF-8 path) or as JSON text. COM must be initialised, and the
/// simulation loaded. Returns what OrvelSimulateMachine returns; `problem` says what is wrong.
int SimulateMachine(const std::string& path, std::string& problem);
int SimulateMachineText(const std::string& json, const char* sourceName, std::string& problem);

/// What the simulation reports since the last machine was put in place, as JSON.
std::string SimulationReport();

/// Records the platform calls in detail, until EndRecording returns them as JSON (OrvelEndRecording).
void StartRecording();
std::string EndRecording();

/// How many platform calls since then begin with `start`, in the words of the report's trace.
int SimulationCalls(const char* start);

} // namespace orvel::tools
