#pragma once

#include <string>
#include <string_view>

#include <nlohmann/json_fwd.hpp>

#include "trace/Recording.h"

namespace orvel::simulation {

/// The interfaces whose living objects are counted.
enum class Counted { Wmi, Dxgi, Nvapi, Nvml, Adl, Adlx, Registry, Pnp, DxCore };

/// The interface's name in the trace, e.g. "nvapi".
const char* NameOf(Counted kind);

/// Adds one platform call to the trace, e.g. "nvml nvmlInit_v2", and to a recording with its details, and waits where the
/// machine lets it hang: the caller holds no lock.
void AddToTrace(const std::string& call, const CallDetails& details = {});

/// Changes the number of living objects or sessions of an interface.
void CountLive(Counted kind, int difference);

/// Clears all calls and counts; objects that still exist are no longer counted.
void ClearTrace();

/// All calls since the last ClearTrace, in order.
nlohmann::json TraceAsJson();

/// How many calls since the last ClearTrace begin with this text.
int CountCalls(std::string_view start);

/// The living objects and sessions per interface.
nlohmann::json LiveAsJson();

/// A member of every counted object: counts it from its construction to its destruction.
class LiveObject {
public:
    explicit LiveObject(Counted kind);
    LiveObject(const LiveObject&) = delete;
    LiveObject& operator=(const LiveObject&) = delete;
    ~LiveObject();

private:
    Counted counted;
    unsigned generation; // identifies the trace in which the object was counted
};

} // namespace orvel::simulation
