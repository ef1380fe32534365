#include "drivers/nvidia/NvapiSession.h"

#include <atomic>

#include "loading/ModuleSetup.h"
#include "trace/Trace.h"
#include "trace/Violations.h"

namespace orvel::simulation {

namespace {

std::atomic<int> sessions = 0;

} // namespace

bool IsInNvapiSession(const std::string& call)
{
    if (sessions == 0) {
        AddViolation(call, "NVAPI is not initialised");
        return false;
    }
    return IsLoadedFor(call, L"nvapi64.dll");
}

void BeginNvapiSession()
{
    ++sessions;
    CountLive(Counted::Nvapi, 1);
}

void EndNvapiSession()
{
    CountLive(Counted::Nvapi, -1);
    if (--sessions == 0) {
        NvapiHandles().Clear();
    }
}

void ResetNvapiSessions()
{
    sessions = 0;
    NvapiHandles().Clear();
}

HandleTable<NvapiGpuModel>& NvapiHandles()
{
    static auto* const handles = new HandleTable<NvapiGpuModel>;
    return *handles;
}

} // namespace orvel::simulation
