#include <algorithm>
#include <string>
#include <vector>

#include "drivers/nvidia/NvapiGpu.h"
#include "drivers/nvidia/NvapiSession.h"
#include "loading/Export.h"
#include "machine/CurrentMachine.h"
#include "trace/Hangs.h"
#include "trace/Trace.h"
#include "trace/Violations.h"

using namespace orvel::simulation;

namespace {

constexpr uint32_t multiGpuVersion = 0x0002001C;
constexpr size_t multiGpuSize = 28; // bytes

int32_t Initialize()
{
    AddToTrace("nvapi NvAPI_Initialize");
    if (IsAbandoned()) {
        return NVAPI_API_NOT_INITIALIZED;
    }
    const int32_t status = CurrentMachine()->nvapi.model.initialize.code;
    if (status == NVAPI_OK) {
        BeginNvapiSession();
    }
    return status;
}

int32_t Unload()
{
    AddToTrace("nvapi NvAPI_Unload");
    if (IsAbandoned() || !IsInNvapiSession("nvapi NvAPI_Unload")) {
        return NVAPI_API_NOT_INITIALIZED;
    }
    const int32_t status = CurrentMachine()->nvapi.model.unload.code;
    if (status == NVAPI_OK) {
        EndNvapiSession();
    }
    return status;
}

using Gpus = std::vector<const NvapiGpuModel*>;

/// The GPUs that only compute, or the others.
Gpus GpusOf(const NvapiModel& model, bool tcc)
{
    Gpus gpus;
    for (const NvapiGpuModel& gpu : model.gpus) {
        if (gpu.tcc == tcc) {
            gpus.push_back(&gpu);
        }
    }
    return gpus;
}

void PutGpus(const Gpus& gpus, void** handles, uint32_t* count)
{
    *count = static_cast<uint32_t>(std::min(gpus.size(), maximumGpus));
    for (uint32_t index = 0; index < *count; ++index) {
        handles[index] = NvapiHandles().HandleOf(*gpus[index]);
    }
}

int32_t ListGpus(const Gpus& gpus, const OutputStatus& answer, int32_t status, void** handles, uint32_t* count)
{
    if (answer.writes == Writes::Rubbish) {
        FillWithRubbish({{handles, maximumGpus * sizeof *handles}, {count, sizeof *count}});
    } else if (status == NVAPI_OK && answer.writes == Writes::AsUsual) {
        PutGpus(gpus, handles, count);
    }
    return status;
}

/// The status of a call that the driver refuses before it lists anything; otherwise NVAPI_OK.
int32_t BeginList(const std::string& call, void* const* handles, const uint32_t* count)
{
    AddToTrace(call);
    if (!IsInNvapiSession(call)) {
        return NVAPI_API_NOT_INITIALIZED;
    }
    return handles && count ? NVAPI_OK : RefuseNull(call);
}

int32_t EnumPhysicalGpus(void** handles, uint32_t* count)
{
    if (const int32_t status = BeginList("nvapi NvAPI_EnumPhysicalGPUs", handles, count); status != NVAPI_OK) {
        return status;
    }
    const auto machine = CurrentMachine();
    const Gpus gpus = GpusOf(machine->nvapi.model, false);
    const OutputStatus& answer = machine->nvapi.model.enumPhysicalGpus;
    const int32_t status = answer.given || !gpus.empty() ? answer.code : NVAPI_NVIDIA_DEVICE_NOT_FOUND;
    return ListGpus(gpus, answer, status, handles, count);
}

int32_t EnumTccPhysicalGpus(void** handles, uint32_t* count)
{
    if (const int32_t status = BeginList("nvapi NvAPI_EnumTCCPhysicalGPUs", handles, count); status != NVAPI_OK) {
        return status;
    }
    const auto machine = CurrentMachine();
    const OutputStatus& answer = machine->nvapi.model.enumTccPhysicalGpus;
    return ListGpus(GpusOf(machine->nvapi.model, true), answer, answer.code, handles, count);
}

/// The multi-GPU query has no published name; callers use its id.
int32_t MultiGpuQuery(uint32_t* words)
{
    const std::string call = "nvapi 0xD2D25687";
    AddToTrace(call);
    if (!IsInNvapiSession(call)) {
        return NVAPI_API_NOT_INITIALIZED;
    }
    if (!words) {
        return RefuseNull(call);
    }
    if (words[0] != 0 || words[1] != multiGpuVersion) {
        return RefuseVersion(call);
    }
    RecordInput(words, multiGpuSize);
    const Area area{words, multiGpuSize};
    return CurrentMachine()->nvapi.model.multiGpu.Give(NVAPI_NOT_SUPPORTED, {area}, [&](const NvapiMultiGpuWords& given) {
        FillWithRubbish({area});
        words[1] = multiGpuVersion;
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
        {0xD9930B07, "NvAPI_EnumTCCPhysicalGPUs", reinterpret_cast<void*>(&EnumTccPhysicalGpus)},
        {0xD2D25687, "0xD2D25687", reinterpret_cast<void*>(&MultiGpuQuery)},
    };
    const auto* const found = std::ranges::find(functions, id, &NvapiFunction::id);
    return found == std::end(functions) ? FindNvapiGpuFunction(id) : found;
}

} // namespace

/// Not in the trace, only in a recording: the trace has the functions that it resolves.
SIMULATED void* Sim_nvapi_QueryInterface(uint32_t id)
{
    const NvapiFunction* const function = FindFunction(id);
    RecordCall(std::string("nvapi nvapi_QueryInterface ") + (function ? function->name : "unknown"), {nullptr, id});
    const auto machine = CurrentMachine();
    const auto& unresolved = machine->nvapi.model.unresolved;
    if (!function || machine->nvapi.standing != Standing::Simulated) {
        return nullptr;
    }
    return std::ranges::find(unresolved, function->name) == unresolved.end() ? function->function : nullptr;
}
