#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace orvel::bench {

/// A machine that is measured.
struct Machine {
    std::string Name;
    nlohmann::json Json;
    int Runs; ///< enumerations that are measured
};

/// The Intel laptop and the workstation of the project's machine files, in this folder.
std::vector<Machine> ShippedMachines(const std::string& folder);

/// The laptop with this number of adapters: one model, but each with its own identifiers and keys.
nlohmann::json WithAdapters(const nlohmann::json& laptop, unsigned int count);

/// The same machine, on which no search in the registry has anything to pass by.
nlohmann::json WithoutRegistry(nlohmann::json machine);

/// The same machine with the delays of a real WMI.
nlohmann::json WithLatency(nlohmann::json machine);

// What a real WMI takes, in microseconds.
constexpr double connectionMicroseconds = 5000;
constexpr double queryMicroseconds = 10000;

} // namespace orvel::bench
