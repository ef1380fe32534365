#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace orvel::bench {

/// A machine to measure.
struct Machine {
    std::string Name;
    nlohmann::json Json;
    int Runs; ///< number of measured enumerations
};

/// The Intel laptop and the workstation from the project's machine files in this folder.
std::vector<Machine> ShippedMachines(const std::string& folder);

/// The laptop with this number of adapters of one model, each with its own identifiers and registry keys.
nlohmann::json WithAdapters(const nlohmann::json& laptop, unsigned int count);

/// The same machine with an empty registry, so that registry searches cost nothing.
nlohmann::json WithoutRegistry(nlohmann::json machine);

/// The same machine with the delays of a real WMI.
nlohmann::json WithLatency(nlohmann::json machine);

// The latency of a real WMI, in microseconds.
constexpr double connectionMicroseconds = 5000;
constexpr double queryMicroseconds = 10000;

} // namespace orvel::bench
