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
    std::vector<std::string> Events; ///< the trace with each log line, and what the test notes, at its place

    const Json& Card(size_t index) const { return Cards.at(index); }
};

/// Puts the process on the machine and enumerates once, as a host does.
Enumerated Enumerate(const Json& machine);

/// A record whose fractions are those of 32-bit floats, however many digits they are written with.
Json AsFloats(Json card);

/// A line of LogLines.
std::string Line(const std::string& severity, const std::string& function, const std::string& message);

} // namespace orvel::tests
