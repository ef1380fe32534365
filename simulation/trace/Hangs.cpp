#include "trace/Hangs.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>

#include <windows.h>

namespace orvel::simulation {

namespace {

struct CountedHang {
    Hang hang;
    uint32_t calls = 0;
};

struct State {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<CountedHang> hangs;
    unsigned generation = 0;
    bool hasHung = false;
};

/// Never destroyed: a thread may hang while the process ends.
State& state = *new State;

thread_local bool isAbandoned = false;

/// The time that a call takes, if it is one that hangs. The state is locked.
std::optional<std::chrono::milliseconds> TimeOf(const std::string& call)
{
    std::optional<std::chrono::milliseconds> time;
    for (CountedHang& each : state.hangs) {
        if (!call.starts_with(each.hang.call)) {
            continue;
        }
        ++each.calls;
        if (!time && (each.hang.nth == 0 || each.hang.nth == each.calls)) {
            time = std::chrono::milliseconds(each.hang.milliseconds);
        }
    }
    return time;
}

void KeepThisDll()
{
    HMODULE self = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                       reinterpret_cast<LPCWSTR>(&KeepThisDll), &self);
}

} // namespace

void SetHangs(std::vector<Hang> hangs)
{
    const std::scoped_lock lock(state.mutex);
    state.hangs.clear();
    for (Hang& hang : hangs) {
        state.hangs.push_back({std::move(hang)});
    }
    ++state.generation;
    state.changed.notify_all();
}

void HangIn(const std::string& call)
{
    std::unique_lock lock(state.mutex);
    const auto time = TimeOf(call);
    if (!time) {
        return;
    }
    if (!state.hasHung) {
        KeepThisDll();
        state.hasHung = true;
    }
    const unsigned generation = state.generation;
    isAbandoned = state.changed.wait_for(lock, *time, [&] { return state.generation != generation; });
}

bool IsAbandoned()
{
    return isAbandoned;
}

bool HasHung()
{
    const std::scoped_lock lock(state.mutex);
    return state.hasHung;
}

} // namespace orvel::simulation
