#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Machines.h"

namespace orvel::bench {

/// What was measured on one machine. Times in microseconds.
struct Figures {
    std::string Machine;
    size_t Cards = 0;
    double Product = 0; ///< one enumeration, no logger attached
    double Floor = 0;
    size_t Calls = 0; ///< platform calls in the trace
    size_t Connections = 0;
    size_t Queries = 0;
    double Modelled = 0; ///< one enumeration where WMI takes its time
    double Ideal = 0;    ///< one connection and each distinct query once, one after another
    bool HasSameTrace = false;
};

/// Loads the simulation beside this program and puts the process on a machine; throws std::runtime_error. The product is
/// loaded by its first enumeration.
void Simulate(const nlohmann::json& machine);

Figures MeasureMachine(const Machine& machine);

/// Whether product and floor leave the same trace on the machine; if not, the first difference goes to the error stream.
bool HasSameTrace(const nlohmann::json& machine);

/// Microseconds that this process, which has not loaded the product yet, takes to load it on the machine.
double MeasureLoading(const nlohmann::json& machine);

/// Peak working set of this process in KiB on the machine, after one enumeration or without the product.
size_t MeasurePeakWorkingSet(const nlohmann::json& machine, bool isEnumerated);

double Median(std::vector<double> values);

} // namespace orvel::bench
