#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "Printing.h"

namespace orvel::tests {

using Json = nlohmann::json;

/// A machine file of the project, by its name: Machine("intel-laptop").
Json Machine(const std::string& name);

/// The names of the project's machine files, in alphabetical order.
std::vector<std::string> MachineNames();

/// The expected results of the machine, from machines/expected: `cards`, `log`, `thrown`.
Json Expected(const std::string& name);

/// The laptop of machines/intel-laptop.json: one healthy Intel adapter. Tests change one thing about it.
Json HealthyLaptop();

/// The row of a machine's WMI class.
Json& Row(Json& machine, const std::string& wmiClass, size_t index = 0);
Json& VideoController(Json& machine, size_t index = 0);
Json& MemoryModule(Json& machine, size_t index = 0);

/// Puts a machine in place without enumerating, for tests of single wrappers and helpers.
void Simulate(const Json& machine);

/// The calls that the simulation has recorded since Simulate.
std::vector<std::string> Trace();
/// Adds an event that the simulation does not record to the current position of the trace.
void Note(const std::string& event);
/// The trace with the notes at their positions.
std::vector<std::string> Events();
std::map<std::string, int> Live();

/// The violations of driver rules ("CALL: WHAT") since the last call. A test that provokes a violation must take it; any
/// violation that is left fails the test when it puts the next machine in place or ends.
std::vector<std::string> TakeViolations();

/// Fails the running test for every violation that it did not expect.
void CheckNoViolations();

/// The lines of `trace` that begin with `prefix`.
std::vector<std::string> Only(const std::vector<std::string>& trace, const std::string& prefix);

/// One log line, written as "warning orvel::…::GetAdapterRam: Failed to …".
using LogLines = std::vector<std::string>;

/// The namespace that log lines begin with.
inline const std::string ns = "orvel::shared::enumeration::";

} // namespace orvel::tests
