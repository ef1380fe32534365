#include "trace/Trace.h"

#include <algorithm>
#include <array>
#include <deque>
#include <mutex>
#include <unordered_map>

#include <nlohmann/json.hpp>

#include "trace/Hangs.h"

namespace orvel::simulation {

namespace {

constexpr std::array interfaceNames = {"wmi",  "dxgi",     "nvapi", "nvml",  "adl",
                                       "adlx", "registry", "pnp",   "dxcore"}; // in the order of Counted
constexpr size_t alwaysListed = 6; // of them; the others are listed where something was counted

/// Runs repeat the same few hundred calls, so the trace stores each call as the four-byte number of its text.
struct Record {
    std::mutex mutex;
    std::unordered_map<std::string, uint32_t> numbers;
    std::deque<std::string> texts;
    std::deque<uint32_t> calls;
    std::array<int, interfaceNames.size()> live{};
    std::array<bool, interfaceNames.size()> isCounted{};
    unsigned generation = 0;
};

/// Never destroyed: a static object of the product may still make calls while the process ends.
Record& record = *new Record;

} // namespace

const char* NameOf(Counted kind)
{
    return interfaceNames[static_cast<size_t>(kind)];
}

void AddToTrace(const std::string& call, const CallDetails& details)
{
    if (IsAbandoned()) {
        return;
    }
    {
        const std::scoped_lock lock(record.mutex);
        const auto [entry, isNew] = record.numbers.try_emplace(call, static_cast<uint32_t>(record.texts.size()));
        if (isNew) {
            record.texts.push_back(call);
        }
        record.calls.push_back(entry->second);
    }
    RecordCall(call, details);
    HangIn(call);
}

void CountLive(Counted kind, int difference)
{
    if (IsAbandoned()) {
        return;
    }
    const std::scoped_lock lock(record.mutex);
    record.live[static_cast<size_t>(kind)] += difference;
    record.isCounted[static_cast<size_t>(kind)] = true;
}

void ClearTrace()
{
    const std::scoped_lock lock(record.mutex);
    record.numbers.clear();
    record.texts.clear();
    record.calls.clear();
    record.live = {};
    record.isCounted = {};
    ++record.generation;
}

nlohmann::json TraceAsJson()
{
    const std::scoped_lock lock(record.mutex);
    auto trace = nlohmann::json::array();
    for (const uint32_t number : record.calls) {
        trace.push_back(record.texts[number]);
    }
    return trace;
}

int CountCalls(std::string_view start)
{
    const std::scoped_lock lock(record.mutex);
    return static_cast<int>(
        std::ranges::count_if(record.calls, [&](uint32_t number) { return record.texts[number].starts_with(start); }));
}

nlohmann::json LiveAsJson()
{
    const std::scoped_lock lock(record.mutex);
    auto live = nlohmann::json::object();
    for (size_t index = 0; index < interfaceNames.size(); ++index) {
        if (index < alwaysListed || record.isCounted[index]) {
            live[interfaceNames[index]] = record.live[index];
        }
    }
    return live;
}

LiveObject::LiveObject(Counted kind) : counted(kind)
{
    const std::scoped_lock lock(record.mutex);
    generation = IsAbandoned() ? record.generation - 1 : record.generation;
    if (generation == record.generation) {
        ++record.live[static_cast<size_t>(counted)];
        record.isCounted[static_cast<size_t>(counted)] = true;
    }
}

LiveObject::~LiveObject()
{
    const std::scoped_lock lock(record.mutex);
    if (generation == record.generation) {
        --record.live[static_cast<size_t>(counted)];
    }
}

} // namespace orvel::simulation
