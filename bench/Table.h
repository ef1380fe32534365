#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Measure.h"

namespace orvel::bench {

/// The results of one run of the benchmark.
struct Results {
    std::vector<Figures> Machines;
    double LoadMicroseconds = 0;
    size_t PeakWorkingSetKib = 0;
    size_t PeakWorkingSetBeforeKib = 0; ///< the same without the product
    std::map<std::string, std::uintmax_t> DllBytes;
};

/// An upper limit for a figure, and the measured value.
struct Target {
    std::string Name;
    double Limit;
    double Measured;
};

std::vector<Target> Targets(const Results& results);

/// The results as a Markdown table and a few lines.
std::string ToTable(const Results& results);
nlohmann::json ToJson(const Results& results);

} // namespace orvel::bench
