#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Measure.h"

namespace orvel::bench {

/// Everything that one run of the benchmark found out.
struct Results {
    std::vector<Figures> Machines;
    double LoadMicroseconds = 0;
    size_t PeakWorkingSetKib = 0;
    size_t PeakWorkingSetBeforeKib = 0; ///< of the same process on the same machine without the product
    std::map<std::string, std::uintmax_t> DllBytes;
};

/// What was set out to be reached at most, and what was.
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
