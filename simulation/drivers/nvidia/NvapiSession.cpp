#include "drivers/nvidia/NvapiSession.h"

#include <atomic>

#include "loading/DriverState.h"
#include "loading/ModuleSetup.h"
#include "trace/Trace.h"
#include "trace/Violations.h"

namespace orvel::simulation {

namespace {

std::atomic<int> sessions = 0;

const DriverState state([] {
    sessions = 0;
    NvapiHandles().Clear();
    NvapiLogicalHandles().Clear();
});

} // namespace

int32_t RefuseNull(const std::string& call)
{
    return Refuse(call, "a null pointer", NVAPI_INVALID_ARGUMENT);
}

int32_t RefuseVersion(const std::string& call)
{
    return Refuse(call, "the structure's version is wrong", NVAPI_INCOMPATIBLE_STRUCT_VERSION);
}

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
        NvapiLogicalHandles().Clear();
    }
}

HandleTable<NvapiGpuModel>& NvapiHandles()
{
    static auto* const handles = new HandleTable<NvapiGpuModel>;
    return *handles;
}

HandleTable<NvapiGpuModel>& NvapiLogicalHandles()
{
    static auto* const handles = new HandleTable<NvapiGpuModel>;
    return *handles;
}

} // namespace orvel::simulation
