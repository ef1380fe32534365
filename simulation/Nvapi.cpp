#include "Nvapi.h"

#include "CurrentMachine.h"
#include "Export.h"
#include "NvapiGpu.h"
#include "Trace.h"

#include <algorithm>
#include <cstring>

namespace orvel::simulation {

namespace {

constexpr size_t MaximumGpus = 64; // length of the handle array
constexpr uint32_t MultiGpuVersion = 0x0002001C;

int32_t Initialize()
{
    AddToTrace("nvapi NvAPI_Initialize");
    const int32_t status = CurrentMachine()->nvapi.model.initialize.code;
    if (status == NVAPI_OK)
        CountLive(Counted::Nvapi, 1);
    return status;
}

int32_t Unload()
{
    AddToTrace("nvapi NvAPI_Unload");
    const int32_t status = CurrentMachine()->nvapi.model.unload.code;
    if (status == NVAPI_OK)
        CountLive(Counted::Nvapi, -1);
    return status;
}

int32_t EnumPhysicalGpus(void** handles, uint32_t* count)
{
    AddToTrace("nvapi NvAPI_EnumPhysicalGPUs");
    if (handles == nullptr || count == nullptr)
        return NVAPI_INVALID_ARGUMENT;
    const auto machine = CurrentMachine();
    const NvapiModel& model = machine->nvapi.model;
    if (model.enumPhysicalGpus.code != NVAPI_OK)
        return model.enumPhysicalGpus.code;
    *count = static_cast<uint32_t>(std::min(model.gpus.size(), MaximumGpus));
    for (uint32_t index = 0; index < *count; ++index)
        handles[index] = const_cast<NvapiGpuModel*>(&model.gpus[index]);
    return NVAPI_OK;
}

/// The multi-GPU query has no published name that anybody asks for: it goes by its id.
int32_t MultiGpuQuery(uint32_t* words)
{
    AddToTrace("nvapi 0xD2D25687");
    if (words == nullptr)
        return NVAPI_INVALID_ARGUMENT;
    if (words[0] != 0 || words[1] != MultiGpuVersion)
        return NVAPI_INCOMPATIBLE_STRUCT_VERSION;
    return CurrentMachine()->nvapi.model.multiGpu.Give(NVAPI_NOT_SUPPORTED, [words](const NvapiMultiGpuWords& given) {
        words[2] = given[0];
        words[3] = given[1];
    });
}

const NvapiFunction* FindFunction(uint32_t id)
{
    static const NvapiFunction functions[] = {
        {0x0150E828, "NvAPI_Initialize", reinterpret_cast<void*>(&Initialize)},
        {0xD22BDD7E, "NvAPI_Unload", reinterpret_cast<void*>(&Unload)},
        {0xE5AC921F, "NvAPI_EnumPhysicalGPUs", reinterpret_cast<void*>(&EnumPhysicalGpus)},
        {0xD2D25687, "0xD2D25687", reinterpret_cast<void*>(&MultiGpuQuery)},
    };
    const auto* const found = std::ranges::find(functions, id, &NvapiFunction::id);
    return found == std::end(functions) ? FindNvapiGpuFunction(id) : found;
}

} // namespace

void ResetNvapi()
{
    ResetNvapiMemoryInfo();
}

} // namespace orvel::simulation

using namespace orvel::simulation;

/// Leaves no trace itself: the functions that it resolves do.
SIMULATED void* Sim_nvapi_QueryInterface(uint32_t id)
{
    const NvapiFunction* const function = FindFunction(id);
    const auto machine = CurrentMachine();
    const auto& unresolved = machine->nvapi.model.unresolved;
    if (function == nullptr || machine->nvapi.standing != Standing::Simulated)
        return nullptr;
    return std::ranges::find(unresolved, function->name) == unresolved.end() ? function->function : nullptr;
}
