#include "Adlx.h"

#include "AdlxObjects.h"
#include "Export.h"

namespace orvel::simulation {

namespace {

constexpr uint64_t FullVersion = 0x0001000200000048; // 1.2.0, build 72

/// Begins the session unless the status forbids it, and hands the uncounted objects out.
int32_t BeginSession(int32_t status, AdlxObject** system, AdlxObject** mapping)
{
    AdlxState& state = TheAdlx();
    const std::scoped_lock lock(state.mutex);
    if (CurrentMachine()->adlx.standing != Standing::Simulated)
        status = ADLX_FAIL;
    else if (status == ADLX_OK && state.session)
        status = ADLX_ALREADY_INITIALIZED;
    const bool succeeded = status <= ADLX_ALREADY_INITIALIZED;
    if (succeeded && !state.session)
        state.session.emplace(Counted::Adlx);
    *system = succeeded ? state.objects->System() : nullptr;
    if (mapping != nullptr)
        *mapping = succeeded ? state.objects->Mapping() : nullptr;
    return status;
}

} // namespace

void ResetAdlx()
{
    AdlxState& state = TheAdlx();
    const std::scoped_lock lock(state.mutex);
    state.session.reset();
    state.objects = std::make_unique<AdlxObjects>(CurrentMachine());
}

} // namespace orvel::simulation

using namespace orvel::simulation;

SIMULATED int32_t Sim_ADLXQueryFullVersion(uint64_t* version)
{
    AddToTrace("adlx ADLXQueryFullVersion");
    if (version == nullptr)
        return ADLX_INVALID_ARGS;
    *version = FullVersion;
    return ADLX_OK;
}

SIMULATED int32_t Sim_ADLXQueryVersion(const char** version)
{
    AddToTrace("adlx ADLXQueryVersion");
    if (version == nullptr)
        return ADLX_INVALID_ARGS;
    *version = "1.2";
    return ADLX_OK;
}

/// The callback that frees the caller's memory is never called: no function here allocates any.
SIMULATED int32_t Sim_ADLXInitializeWithCallerAdl(uint64_t version, AdlxObject** system, AdlxObject** mapping, void* context,
                                                  void(__stdcall* memoryFree)(void** buffer))
{
    AddToTrace("adlx ADLXInitializeWithCallerAdl");
    if (system == nullptr || mapping == nullptr || context == nullptr || memoryFree == nullptr)
        return ADLX_INVALID_ARGS;
    if (version != FullVersion)
        return ADLX_BAD_VER;
    return BeginSession(CurrentMachine()->adlx.model.initializeWithCallerAdl.code, system, mapping);
}

SIMULATED int32_t Sim_ADLXInitializeWithIncompatibleDriver(uint64_t, AdlxObject** system)
{
    AddToTrace("adlx ADLXInitializeWithIncompatibleDriver");
    if (system != nullptr)
        *system = nullptr;
    return ADLX_NOT_SUPPORTED;
}

SIMULATED int32_t Sim_ADLXInitialize(uint64_t version, AdlxObject** system)
{
    AddToTrace("adlx ADLXInitialize");
    if (system == nullptr)
        return ADLX_INVALID_ARGS;
    if (version != FullVersion)
        return ADLX_BAD_VER;
    return BeginSession(CurrentMachine()->adlx.model.initialize.code, system, nullptr);
}

/// Objects that are still held are told of, but do not keep the session alive.
SIMULATED int32_t Sim_ADLXTerminate()
{
    AddToTrace("adlx ADLXTerminate");
    AdlxState& state = TheAdlx();
    const std::scoped_lock lock(state.mutex);
    if (!state.session)
        return ADLX_TERMINATED;
    state.session.reset();
    return state.objects->AnyAlive() ? ADLX_ORPHAN_OBJECTS : ADLX_OK;
}
