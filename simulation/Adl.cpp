#include "CurrentMachine.h"
#include "Export.h"
#include "Trace.h"

#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <windows.h>

using namespace orvel::simulation;

namespace {

constexpr int32_t ADL_OK = 0;
constexpr int32_t ADL_ERR = -1;
constexpr int32_t ADL_ERR_INVALID_PARAM = -3;
constexpr int32_t ADL_ERR_INVALID_ADL_IDX = -5;
constexpr int32_t ADL_ERR_NOT_SUPPORTED = -8;
constexpr int32_t ADL_ERR_NULL_POINTER = -9;
constexpr int32_t ActivitySize = 40; // bytes

/// A context is an address of its own until it is destroyed.
struct Context {
    LiveObject live{Counted::Adl};
};

/// Never destroyed: a static object of the product may still make calls while the process ends.
struct Contexts {
    std::mutex mutex;
    std::map<void*, std::unique_ptr<Context>> alive;
};

Contexts& TheContexts()
{
    static auto* const contexts = new Contexts;
    return *contexts;
}

void* NewContext()
{
    Contexts& contexts = TheContexts();
    const std::scoped_lock lock(contexts.mutex);
    auto context = std::make_unique<Context>();
    void* const handle = context.get();
    contexts.alive[handle] = std::move(context);
    return handle;
}

bool DestroyContext(void* handle)
{
    Contexts& contexts = TheContexts();
    const std::scoped_lock lock(contexts.mutex);
    return contexts.alive.erase(handle) != 0;
}

void Put(void* area, size_t offset, int32_t number)
{
    std::memcpy(static_cast<char*>(area) + offset, &number, sizeof number);
}

void TraceCall(const char* name, int32_t adapter)
{
    AddToTrace(std::string("adl ") + name + " " + std::to_string(adapter));
}

/// Gives an adapter's answer, if the machine has the adapter.
template <typename Value, typename Write>
int32_t Give(int32_t adapter, const void* target, Answer<Value> AdlAdapterModel::*member, Write&& write)
{
    if (target == nullptr)
        return ADL_ERR_NULL_POINTER;
    const auto machine = CurrentMachine();
    const auto& adapters = machine->adl.model.adapters;
    const auto found = adapters.find(adapter);
    return found == adapters.end() ? ADL_ERR_INVALID_ADL_IDX : (found->second.*member).Give(ADL_ERR_NOT_SUPPORTED, write);
}

} // namespace

using AdlAllocate = void*(__stdcall*)(int32_t size);

// The published function has three parameters. A fourth, which callers of the threading variant pass, is ignored.
SIMULATED int32_t Sim_ADL2_Main_Control_Create(AdlAllocate, int32_t, void** context)
{
    AddToTrace("adl ADL2_Main_Control_Create");
    if (context == nullptr)
        return ADL_ERR_NULL_POINTER;
    const auto machine = CurrentMachine();
    *context = machine->adl.model.context ? NewContext() : nullptr;
    return machine->adl.model.create.code;
}

SIMULATED int32_t Sim_ADL2_Main_Control_Destroy(void* context)
{
    const bool wasAlive = DestroyContext(context);
    AddToTrace(wasAlive ? "adl ADL2_Main_Control_Destroy" : "adl ADL2_Main_Control_Destroy too many");
    return wasAlive ? ADL_OK : ADL_ERR;
}

SIMULATED int32_t Sim_ADL2_Adapter_Graphic_Core_Info_Get(void*, int32_t adapter, void* info)
{
    TraceCall("ADL2_Adapter_Graphic_Core_Info_Get", adapter);
    return Give(adapter, info, &AdlAdapterModel::coreInfo, [info](const AdlCoreInfo& core) {
        Put(info, 4, core.iNumCUs);
        Put(info, 8, core.iNumPEsPerCU);
        Put(info, 16, core.iNumROPs);
    });
}

SIMULATED int32_t Sim_ADL2_Adapter_Crossfire_Get(void*, int32_t adapter, void*, void* info)
{
    TraceCall("ADL2_Adapter_Crossfire_Get", adapter);
    return Give(adapter, info, &AdlAdapterModel::crossfire,
                [info](const AdlCrossfire& crossfire) { Put(info, 8, crossfire.iSupported); });
}

SIMULATED int32_t Sim_ADL_Overdrive5_CurrentActivity_Get(int32_t adapter, int32_t* activity)
{
    TraceCall("ADL_Overdrive5_CurrentActivity_Get", adapter);
    if (activity != nullptr && *activity != ActivitySize)
        return ADL_ERR_INVALID_PARAM;
    return Give(adapter, activity, &AdlAdapterModel::activity,
                [activity](const AdlActivity& current) { Put(activity, 32, current.iMaximumBusLanes); });
}

SIMULATED int32_t Sim_ADL2_Workstation_ECC_Caps(void*, int32_t adapter, int32_t* supported)
{
    TraceCall("ADL2_Workstation_ECC_Caps", adapter);
    return Give(adapter, supported, &AdlAdapterModel::eccSupported, [supported](int32_t flag) { *supported = flag; });
}

SIMULATED int32_t Sim_ADL2_Workstation_ECC_Get(void*, int32_t adapter, int32_t* defaultMode, int32_t* currentMode,
                                               int32_t* desiredMode)
{
    TraceCall("ADL2_Workstation_ECC_Get", adapter);
    if (defaultMode == nullptr || desiredMode == nullptr)
        return ADL_ERR_NULL_POINTER;
    return Give(adapter, currentMode, &AdlAdapterModel::eccModes, [&](const AdlEccModes& modes) {
        *defaultMode = modes.defaultMode;
        *currentMode = modes.currentMode;
        *desiredMode = modes.desiredMode;
    });
}

SIMULATED int32_t Sim_ADL2_Workstation_ECCData_Get(void*, int32_t adapter, void* data)
{
    TraceCall("ADL2_Workstation_ECCData_Get", adapter);
    return Give(adapter, data, &AdlAdapterModel::eccData, [data](const AdlEccData& errors) {
        Put(data, 0, errors.iSec);
        Put(data, 4, errors.iDed);
    });
}

/// The product resolves it and never calls it.
SIMULATED int32_t Sim_ADL_Adapter_ObservedClockInfo_Get(int32_t adapter, int32_t*, int32_t*)
{
    TraceCall("ADL_Adapter_ObservedClockInfo_Get", adapter);
    return ADL_ERR_NOT_SUPPORTED;
}
