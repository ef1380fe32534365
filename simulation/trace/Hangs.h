#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orvel::simulation {

/// A call that takes long.
struct Hang {
    std::string call; // how its line in the trace begins
    uint32_t nth = 0; // of the calls that begin so, counted from 1; 0: each
    uint32_t milliseconds = 0;
};

/// Sets the calls that hang from now on. Those that hang already end at once, and their threads are abandoned: the machine
/// that they called is gone.
void SetHangs(std::vector<Hang> hangs);

/// Waits if this call hangs. The first call that does keeps this DLL loaded for good.
void HangIn(const std::string& call);

/// Whether this thread was in a call that hung when another machine was put in place. What it still does is not recorded.
bool IsAbandoned();

/// Whether any call has ever hung. Its thread may still use what it got from the simulation, whatever machine is in place.
bool HasHung();

} // namespace orvel::simulation
