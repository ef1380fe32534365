#include "drivers/amd/AdlContexts.h"
#include "drivers/amd/AdlxSession.h"
#include "loading/Export.h"
#include "loading/ModuleSetup.h"
#include "trace/Hangs.h"
#include "trace/Violations.h"

using namespace orvel::simulation;

namespace {

/// The caller's function that frees memory from the ADL callback.
using AdlxFree = void(__stdcall*)(void** buffer);

constexpr int32_t adapterListSize = 4096; // bytes

/// ADLX makes ADL list its adapters: ADL allocates the list with the caller's callback, and ADLX frees it with the other
/// one. False if the allocation fails.
bool UseCallersMemory(const std::string& call, void* context, AdlxFree free)
{
    void* buffer = AllocateFromAdlCaller(context, adapterListSize);
    if (!buffer) {
        return false;
    }
    FillWithRubbish({{buffer, adapterListSize}});
    free(&buffer);
    if (buffer) {
        AddViolation(call, "the callback for freed memory left the pointer to it");
    }
    return true;
}

/// Whether the driver serves a caller of this version, which must not be newer than the driver's, if it has one.
bool IsServed(uint64_t version)
{
    return version != 0 && version <= CurrentMachine()->adlx.model.fullVersion.value.value_or(UINT64_MAX);
}

/// Starts the session unless the status is a failure, and returns the uncounted objects.
int32_t BeginSession(const OutputStatus& answer, AdlxObject** system, AdlxObject** mapping, void* context)
{
    AdlxState& state = TheAdlx();
    const std::scoped_lock lock(state.mutex);
    int32_t status = answer.code;
    if (CurrentMachine()->adlx.standing != Standing::Simulated) {
        status = ADLX_FAIL;
    } else if (status == ADLX_OK && state.session) {
        status = ADLX_ALREADY_INITIALIZED;
    }
    if (AdlxSucceeded(status)) {
        if (!state.session) {
            state.session.emplace();
        }
        state.session->adlContext = context;
    }
    void* const dead = DeadObject("adlx initialisation wrote rubbish", ADLX_TERMINATED);
    const auto put = [&](AdlxObject** target, AdlxObject* object) {
        if (target && answer.writes != Writes::Nothing) {
            *target = answer.writes == Writes::Rubbish ? static_cast<AdlxObject*>(dead) : object;
        }
    };
    put(system, AdlxSucceeded(status) ? state.session->System() : nullptr);
    const bool hasMapping = AdlxSucceeded(status) && CurrentMachine()->adlx.model.mapping;
    put(mapping, hasMapping ? state.session->Mapping() : nullptr);
    return status;
}

} // namespace

SIMULATED int32_t Sim_ADLXQueryFullVersion(uint64_t* version)
{
    AddToTrace("adlx ADLXQueryFullVersion");
    if (!version) {
        return ADLX_INVALID_ARGS;
    }
    return CurrentMachine()->adlx.model.fullVersion.GiveTo(version, ADLX_NOT_SUPPORTED);
}

SIMULATED int32_t Sim_ADLXQueryVersion(const char** version)
{
    AddToTrace("adlx ADLXQueryVersion");
    if (!version) {
        return ADLX_INVALID_ARGS;
    }
    *version = "1.2";
    return ADLX_OK;
}

SIMULATED int32_t Sim_ADLXInitializeWithCallerAdl(uint64_t version, AdlxObject** system, AdlxObject** mapping, void* context,
                                                  AdlxFree memoryFree)
{
    const std::string call = "adlx ADLXInitializeWithCallerAdl";
    AddToTrace(call, {context, version});
    if (IsAbandoned()) {
        return ADLX_TERMINATED;
    }
    if (!system || !mapping || !context || !memoryFree) {
        AddViolation(call, "a null pointer");
        return ADLX_INVALID_ARGS;
    }
    if (!IsServed(version)) {
        return ADLX_BAD_VER;
    }
    const auto machine = CurrentMachine();
    const OutputStatus& answer = machine->adlx.model.initializeWithCallerAdl;
    // Contexts of the computer's own ADL cannot be checked.
    const bool isSimulated = machine->adl.standing != Standing::System;
    if (isSimulated && !IsAdlContextAlive(context)) {
        AddViolation(call, "the ADL context is not alive");
        return ADLX_ADL_INIT_ERROR;
    }
    if (isSimulated && AdlxSucceeded(answer.code) && !UseCallersMemory(call, context, memoryFree)) {
        return ADLX_ADL_INIT_ERROR;
    }
    return BeginSession(answer, system, mapping, isSimulated ? context : nullptr);
}

SIMULATED int32_t Sim_ADLXInitializeWithIncompatibleDriver(uint64_t, AdlxObject** system)
{
    AddToTrace("adlx ADLXInitializeWithIncompatibleDriver");
    if (system) {
        *system = nullptr;
    }
    return ADLX_NOT_SUPPORTED;
}

SIMULATED int32_t Sim_ADLXInitialize(uint64_t version, AdlxObject** system)
{
    AddToTrace("adlx ADLXInitialize");
    if (IsAbandoned()) {
        return ADLX_TERMINATED;
    }
    if (!system) {
        return ADLX_INVALID_ARGS;
    }
    if (!IsServed(version)) {
        return ADLX_BAD_VER;
    }
    return BeginSession(CurrentMachine()->adlx.model.initialize, system, nullptr, nullptr);
}

/// Objects with references do not keep the session open: they become invalid.
SIMULATED int32_t Sim_ADLXTerminate()
{
    const std::string call = "adlx ADLXTerminate";
    AddToTrace(call);
    if (IsAbandoned()) {
        return ADLX_TERMINATED;
    }
    AdlxState& state = TheAdlx();
    const std::scoped_lock lock(state.mutex);
    if (!IsLoadedFor(call, L"amdadlx64.dll") || !state.session) {
        return ADLX_TERMINATED;
    }
    const std::string held = state.session->HeldObjects();
    state.session.reset();
    if (held.empty()) {
        return ADLX_OK;
    }
    AddViolation(call, "objects are still held: " + held);
    return ADLX_ORPHAN_OBJECTS;
}
