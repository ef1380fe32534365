#pragma once

#include <optional>
#include <string>

namespace orvel::tools {

/// Why a simulated machine is not there.
struct SimulationProblem {
    int Status; ///< the program's exit status
    std::string Text;
};

/// Puts this process on the simulated machine of a file (UTF-8 path). COM must be initialised, and the enumeration library
/// not loaded yet.
std::optional<SimulationProblem> SimulateMachine(const std::string& path);

/// What the simulation has to tell after an enumeration, as JSON.
std::string SimulationReport();

} // namespace orvel::tools
