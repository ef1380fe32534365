#include "trace/Recording.h"

#include <atomic>
#include <deque>
#include <map>
#include <mutex>
#include <vector>

#include <nlohmann/json.hpp>

namespace orvel::simulation {

namespace {

using nlohmann::json;

struct Recording {
    std::mutex mutex;
    std::deque<json> calls;
    std::map<const void*, size_t> numbers; // of handles and objects, in the order in which they were first returned
    unsigned generation = 0;
};

/// Never destroyed: a static object of the product may still make calls while the process ends.
Recording& recording = *new Recording;

std::atomic<bool> isRecording = false;

/// The last recorded call of a thread, and its recording.
struct LastCall {
    size_t index = 0;
    unsigned generation = 0;
};

thread_local LastCall last;

/// Runs `add` on the last call of this thread, with the recording locked.
template <typename Add>
void AddToLast(Add&& add)
{
    if (!isRecording) {
        return;
    }
    const std::scoped_lock lock(recording.mutex);
    if (last.generation == recording.generation) {
        add(recording.calls[last.index]);
    }
}

} // namespace

void StartRecording()
{
    const std::scoped_lock lock(recording.mutex);
    recording.calls.clear();
    recording.numbers.clear();
    ++recording.generation;
    isRecording = true;
}

json EndRecording()
{
    const std::scoped_lock lock(recording.mutex);
    isRecording = false;
    json calls(std::vector<json>(recording.calls.begin(), recording.calls.end()));
    recording.calls.clear();
    ++recording.generation;
    return calls;
}

bool IsRecording()
{
    return isRecording;
}

void RecordCall(const std::string& call, const CallDetails& details)
{
    if (!isRecording) {
        return;
    }
    json recorded = {{"call", call}};
    const std::scoped_lock lock(recording.mutex);
    if (const auto on = recording.numbers.find(details.on); on != recording.numbers.end()) {
        recorded["on"] = on->second;
    }
    if (details.number != 0) {
        recorded["number"] = details.number;
    }
    last = {recording.calls.size(), recording.generation};
    recording.calls.push_back(std::move(recorded));
}

void RecordOutput(const void* value)
{
    AddToLast([&](json& call) {
        const auto number = recording.numbers.try_emplace(value, recording.numbers.size()).first->second;
        call["returns"].push_back(number);
    });
}

void RecordInput(const void* area, size_t bytes)
{
    AddToLast([&](json& call) {
        const auto* const start = static_cast<const unsigned char*>(area);
        call["input"] = std::vector<unsigned char>(start, start + bytes);
    });
}

} // namespace orvel::simulation
