#include <algorithm>
#include <cstring>
#include <string>

#include "drivers/amd/AdlContexts.h"
#include "loading/Export.h"
#include "loading/ModuleSetup.h"
#include "machine/CurrentMachine.h"
#include "trace/Trace.h"
#include "trace/Violations.h"

using namespace orvel::simulation;

namespace {

constexpr int32_t ADL_OK = 0;
constexpr int32_t ADL_ERR = -1;
constexpr int32_t ADL_ERR_NOT_INIT = -2;
constexpr int32_t ADL_ERR_INVALID_PARAM = -3;
constexpr int32_t ADL_ERR_INVALID_ADL_IDX = -5;
constexpr int32_t ADL_ERR_NOT_SUPPORTED = -8;
constexpr int32_t ADL_ERR_NULL_POINTER = -9;
constexpr int32_t ADL_ERR_INVALID_CALLBACK = -11;

constexpr const wchar_t* adlDll = L"atiadlxx.dll";

// Sizes of structures, in bytes.
constexpr size_t coreInfoSize = 64;
constexpr size_t coreInfoReserved = 44; // at the end of the structure
constexpr size_t crossfireCombSize = 16;
constexpr size_t crossfireInfoSize = 12;
constexpr int32_t activitySize = 40;
constexpr size_t eccDataSize = 8;

void Put(void* area, size_t offset, int32_t number)
{
    std::memcpy(static_cast<char*>(area) + offset, &number, sizeof number);
}

bool IsZero(const void* area, size_t offset, size_t bytes)
{
    const char* const start = static_cast<const char*>(area) + offset;
    return std::all_of(start, start + bytes, [](char byte) { return byte == 0; });
}

std::string CallOf(const char* name, int32_t adapter)
{
    return std::string("adl ") + name + " " + std::to_string(adapter);
}

/// Returns the adapter's answer, or a failure if the machine has no such adapter.
template <typename Value, typename Write>
int32_t Give(int32_t adapter, Answer<Value> AdlAdapterModel::*member, int32_t leftOut, std::initializer_list<Area> areas,
             Write&& write)
{
    const auto machine = CurrentMachine();
    const auto& adapters = machine->adl.model.adapters;
    const auto found = adapters.find(adapter);
    return found == adapters.end() ? ADL_ERR_INVALID_ADL_IDX : (found->second.*member).Give(leftOut, areas, write);
}

/// A function of ADL2, which needs a valid context and no null area. A null context is the global one of the old ADL_
/// functions, which no caller has created.
template <typename Value, typename Write>
int32_t GiveInContext(const char* name, void* context, int32_t adapter, Answer<Value> AdlAdapterModel::*member,
                      std::initializer_list<Area> areas, Write&& write)
{
    const std::string call = CallOf(name, adapter);
    AddToTrace(call, {context});
    if (!IsLoadedFor(call, adlDll)) {
        return ADL_ERR_NOT_INIT;
    }
    if (!IsAdlContextAlive(context)) {
        return context ? Refuse(call, "the context is not alive", ADL_ERR_NOT_INIT) : ADL_ERR_NOT_INIT;
    }
    if (std::ranges::any_of(areas, [](const Area& area) { return !area.start; })) {
        return Refuse(call, "a null pointer", ADL_ERR_NULL_POINTER);
    }
    return Give(adapter, member, ADL_ERR_NOT_SUPPORTED, areas, [&](const Value& value) {
        FillWithRubbish(areas);
        write(value);
    });
}

} // namespace

// The published function has three parameters. A fourth, which callers of the threading variant pass, is ignored.
SIMULATED int32_t Sim_ADL2_Main_Control_Create(AdlAllocate allocate, int32_t, void** context)
{
    const std::string call = "adl ADL2_Main_Control_Create";
    AddToTrace(call);
    if (!context) {
        return Refuse(call, "a null pointer", ADL_ERR_NULL_POINTER);
    }
    if (!allocate) {
        return Refuse(call, "no callback for memory", ADL_ERR_INVALID_CALLBACK);
    }
    const auto machine = CurrentMachine();
    *context = machine->adl.model.context ? NewAdlContext(allocate) : nullptr;
    return machine->adl.model.create.code;
}

SIMULATED int32_t Sim_ADL2_Main_Control_Destroy(void* context)
{
    const std::string call = "adl ADL2_Main_Control_Destroy";
    AddToTrace(call, {context});
    if (!IsLoadedFor(call, adlDll)) {
        return ADL_ERR_NOT_INIT;
    }
    return DestroyAdlContext(context) ? ADL_OK : Refuse(call, "the context is not alive", ADL_ERR);
}

SIMULATED int32_t Sim_ADL2_Adapter_Graphic_Core_Info_Get(void* context, int32_t adapter, void* info)
{
    const char* const name = "ADL2_Adapter_Graphic_Core_Info_Get";
    if (info && !IsZero(info, coreInfoSize - coreInfoReserved, coreInfoReserved)) {
        AddViolation(CallOf(name, adapter), "reserved numbers are not 0");
    }
    return GiveInContext(name, context, adapter, &AdlAdapterModel::coreInfo, {{info, coreInfoSize}},
                         [info](const AdlCoreInfo& core) {
                             Put(info, 4, core.iNumCUs);
                             Put(info, 8, core.iNumPEsPerCU);
                             Put(info, 16, core.iNumROPs);
                         });
}

/// The combination selects a chain of adapters. The product selects none, so all of its bytes are 0.
SIMULATED int32_t Sim_ADL2_Adapter_Crossfire_Get(void* context, int32_t adapter, void* combination, void* info)
{
    const char* const name = "ADL2_Adapter_Crossfire_Get";
    if (combination && !IsZero(combination, 0, crossfireCombSize)) {
        AddViolation(CallOf(name, adapter), "the combination is not empty");
    }
    return GiveInContext(name, context, adapter, &AdlAdapterModel::crossfire,
                         {{combination, crossfireCombSize}, {info, crossfireInfoSize}},
                         [info](const AdlCrossfire& crossfire) { Put(info, 8, crossfire.iSupported); });
}

/// An old ADL_ function: it needs the global context, which ADL2_Main_Control_Create does not create. It therefore fails
/// unless the machine file has an answer.
SIMULATED int32_t Sim_ADL_Overdrive5_CurrentActivity_Get(int32_t adapter, int32_t* activity)
{
    const std::string call = CallOf("ADL_Overdrive5_CurrentActivity_Get", adapter);
    AddToTrace(call);
    if (!IsLoadedFor(call, adlDll)) {
        return ADL_ERR_NOT_INIT;
    }
    if (!activity) {
        return Refuse(call, "a null pointer", ADL_ERR_NULL_POINTER);
    }
    if (*activity != activitySize) {
        return Refuse(call, "the structure's size is wrong", ADL_ERR_INVALID_PARAM);
    }
    if (!IsZero(activity, activitySize - 4, 4)) {
        AddViolation(call, "reserved numbers are not 0");
    }
    RecordInput(activity, activitySize);
    const Area area{activity + 1, activitySize - 4};
    return Give(adapter, &AdlAdapterModel::activity, ADL_ERR_NOT_INIT, {area}, [&](const AdlActivity& current) {
        FillWithRubbish({area});
        Put(activity, 32, current.iMaximumBusLanes);
    });
}

SIMULATED int32_t Sim_ADL2_Workstation_ECC_Caps(void* context, int32_t adapter, int32_t* supported)
{
    return GiveInContext("ADL2_Workstation_ECC_Caps", context, adapter, &AdlAdapterModel::eccSupported,
                         {{supported, sizeof *supported}}, [supported](int32_t flag) { *supported = flag; });
}

SIMULATED int32_t Sim_ADL2_Workstation_ECC_Get(void* context, int32_t adapter, int32_t* defaultMode, int32_t* currentMode,
                                               int32_t* desiredMode)
{
    return GiveInContext(
        "ADL2_Workstation_ECC_Get", context, adapter, &AdlAdapterModel::eccModes,
        {{defaultMode, sizeof *defaultMode}, {currentMode, sizeof *currentMode}, {desiredMode, sizeof *desiredMode}},
        [&](const AdlEccModes& modes) {
            *defaultMode = modes.defaultMode;
            *currentMode = modes.currentMode;
            *desiredMode = modes.desiredMode;
        });
}

SIMULATED int32_t Sim_ADL2_Workstation_ECCData_Get(void* context, int32_t adapter, void* data)
{
    return GiveInContext("ADL2_Workstation_ECCData_Get", context, adapter, &AdlAdapterModel::eccData, {{data, eccDataSize}},
                         [data](const AdlEccData& errors) {
                             Put(data, 0, errors.iSec);
                             Put(data, 4, errors.iDed);
                         });
}

/// The product resolves it and never calls it.
SIMULATED int32_t Sim_ADL_Adapter_ObservedClockInfo_Get(int32_t adapter, int32_t*, int32_t*)
{
    AddToTrace(CallOf("ADL_Adapter_ObservedClockInfo_Get", adapter));
    return ADL_ERR_NOT_INIT;
}
