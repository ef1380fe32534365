#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include <nlohmann/json_fwd.hpp>

namespace orvel::simulation {

// A recording lists the calls of the trace, and those of the loader and the registry that Windows answers, with what a
// program needs to repeat them. Without a recording, these functions do nothing.

/// What a repetition of a call needs besides the call's text in the trace.
struct CallDetails {
    const void* on = nullptr; ///< the handle or object that the call is on, as RecordOutput has it
    uint64_t number = 0;      ///< a number that the text lacks, such as the size of the caller's buffer
};

/// Starts an empty recording.
void StartRecording();

/// The calls since StartRecording, as OrvelEndRecording documents them.
nlohmann::json EndRecording();

bool IsRecording();

/// Adds a call. AddToTrace does it for the calls of the trace.
void RecordCall(const std::string& call, const CallDetails& details = {});

/// A handle or object that the last call of this thread returns. No two objects of a recording have the same value.
void RecordOutput(const void* value);

/// What the caller has written to an area that the last call of this thread changes.
void RecordInput(const void* area, size_t bytes);

} // namespace orvel::simulation
