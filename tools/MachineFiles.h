#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace orvel::tools {

/// Folder of this program.
std::filesystem::path ProgramFolder();

/// Folder of the simulation, beside this program or, in the package, beside its folder.
std::filesystem::path SimulationFolder();

/// Short names of the shipped machines, sorted.
std::vector<std::string> MachineNames();

/// The file that `--machine` means: a file of this name, or else the shipped machine of this short name; none where there is
/// neither. UTF-8.
std::optional<std::string> MachineFile(const std::string& nameOrFile);

/// What a machine file calls itself; "" when it does not say, or cannot be read.
std::string TitleOf(const std::string& machineName);

} // namespace orvel::tools
