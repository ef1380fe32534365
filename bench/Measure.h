#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Machines.h"

namespace orvel::bench {

/// The figures of one machine. Times are in microseconds.
struct Figures {
    std::string Machine;
    size_t Cards = 0;
    double Product = 0; ///< one enumeration, no logger attached
    double Floor = 0;
    size_t Calls = 0; ///< platform calls in the trace
    size_t Connections = 0;
    size_t Queries = 0;
    double Modelled = 0;  ///< one enumeration with the latency of a real WMI
    double Ideal = 0;     ///< the latencies of one connection and of each distinct query, added up
    double Inventory = 0; ///< one inventory
    bool HasSameTrace = false;
};

/// Loads the simulation beside this program and puts a machine in place; throws std::runtime_error. Does not load the
/// product.
void Simulate(const nlohmann::json& machine);

Figures MeasureMachine(const Machine& machine);

/// Whether product and floor make the same platform calls on the machine. If not, prints the first difference to stderr.
bool IsRepeated(const nlohmann::json& machine);

/// The time for loading the product on the machine, in microseconds. The process must not have loaded it yet.
double MeasureLoading(const nlohmann::json& machine);

/// Peak working set of this process in KiB, after one enumeration on the machine or without the product.
size_t MeasurePeakWorkingSet(const nlohmann::json& machine, bool isEnumerated);

double Median(std::vector<double> values);

} // namespace orvel::bench
