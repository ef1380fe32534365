#pragma once

#include "SimulatedRun.h"

namespace orvel::tests {

/// The results of one enumeration on a simulated machine, as in the command-line tool's JSON.
struct Enumerated {
    Json Cards; ///< array of objects with a record's properties
    LogLines Log;
    Json Thrown;
    std::vector<std::string> Trace;
    std::map<std::string, int> Live;
    std::vector<std::string> Events; ///< the trace, with log lines and the test's notes at their positions

    const Json& Card(size_t index) const { return Cards.at(index); }
};

/// Puts the process on the machine and enumerates once, as a host does.
Enumerated Enumerate(const Json& machine);

/// The record with its fractions rounded to 32-bit floats, so that the number of written digits does not matter.
Json AsFloats(Json card);

/// A line of LogLines.
std::string Line(const std::string& severity, const std::string& function, const std::string& message);

} // namespace orvel::tests
