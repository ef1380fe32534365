#include "FakeDrivers.h"

#include <cstring>

#include "FakeState.h"
#include "interfaces/NvapiTypes.h"
#include "interfaces/NvmlTypes.h"

namespace orvel::shared::inventory {

namespace {

// --- NVML ---

/// The number of a GPU, from 1, which is also its bus.
uint32_t NumberOf(void* gpu)
{
    return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(gpu));
}

template <typename Write>
int NvmlAnswer(Write write)
{
    if (GoesWrong(Source::Nvml)) {
        return lostGpu;
    }
    write();
    return NVML_SUCCESS;
}

int NvmlInit()
{
    return NvmlAnswer([] { ++state->openDrivers; });
}

int NvmlShutdown()
{
    return NvmlAnswer([] { --state->openDrivers; });
}

int NvmlCount(unsigned int* count)
{
    return NvmlAnswer([&] { *count = 2; });
}

int NvmlHandle(unsigned int index, void** device)
{
    return NvmlAnswer([&] { *device = reinterpret_cast<void*>(uintptr_t{index} + 1); });
}

int NvmlPciInfo(void* device, nvmlPciInfo_t* place)
{
    return NvmlAnswer([&] {
        place->bus = NumberOf(device);
        place->device = 0;
        place->pciDeviceId = 0x250410DE;
        place->pciSubSystemId = 0x40741458;
    });
}

int NvmlMemory(void* device, nvmlMemory_t* memory)
{
    return NvmlAnswer([&] { memory->total = NumberOf(device) * 12 * gibibyte; });
}

int NvmlUuid(void* device, char* text, unsigned int)
{
    return NvmlAnswer([&] { std::strcpy(text, NumberOf(device) == 1 ? "GPU-1" : "GPU-2"); });
}

int NvmlCores(void*, unsigned int* count)
{
    return NvmlAnswer([&] { *count = 3584; });
}

int NvmlBusWidth(void*, unsigned int* bits)
{
    return NvmlAnswer([&] { *bits = 192; });
}

int NvmlMaxClock(void*, int type, unsigned int* megahertz)
{
    return NvmlAnswer([&] { *megahertz = type == NVML_CLOCK_MEM ? 7501 : 2130; });
}

// --- NVAPI ---

template <typename Write>
int32_t NvapiAnswer(Write write, bool isForMatching = false)
{
    if (GoesWrong(Source::Nvapi)) {
        state->isMatchRefused = isForMatching;
        return refusedByNvapi;
    }
    write();
    return enumeration::NVAPI_OK;
}

int32_t NvapiInitialize()
{
    return NvapiAnswer([] { ++state->openDrivers; });
}

int32_t NvapiUnload()
{
    return NvapiAnswer([] { --state->openDrivers; });
}

int32_t NvapiEnum(void** gpus, uint32_t* count)
{
    return NvapiAnswer([&] {
        *count = 2;
        gpus[0] = reinterpret_cast<void*>(uintptr_t{2}); // another order than NVML's
        gpus[1] = reinterpret_cast<void*>(uintptr_t{1});
    });
}

int32_t NvapiBusId(void* gpu, uint32_t* bus)
{
    return NvapiAnswer([&] { *bus = NumberOf(gpu); }, true);
}

int32_t NvapiSlotId(void*, uint32_t* slot)
{
    return NvapiAnswer([&] { *slot = 0; }, true);
}

int32_t NvapiType(void* gpu, uint32_t* type)
{
    return NvapiAnswer([&] { *type = NumberOf(gpu) == 1 ? 2 : 1; });
}

int32_t NvapiIdentifiers(void*, uint32_t* device, uint32_t* subsystem, uint32_t* revision, uint32_t*)
{
    return NvapiAnswer([&] {
        *device = 0x250410DE;
        *subsystem = 0x40741458;
        *revision = 0xA1;
    });
}

void* NvapiQuery(uint32_t id)
{
    using enum enumeration::NvapiId;
    static const std::map<enumeration::NvapiId, void*> functions = {
        {NvAPI_Initialize, Pointer(&NvapiInitialize)},
        {NvAPI_Unload, Pointer(&NvapiUnload)},
        {NvAPI_EnumPhysicalGPUs, Pointer(&NvapiEnum)},
        {NvAPI_GPU_GetBusId, Pointer(&NvapiBusId)},
        {NvAPI_GPU_GetBusSlotId, Pointer(&NvapiSlotId)},
        {NvAPI_GPU_GetGPUType, Pointer(&NvapiType)},
        {NvAPI_GPU_GetPCIIdentifiers, Pointer(&NvapiIdentifiers)},
    };
    const auto found = functions.find(static_cast<enumeration::NvapiId>(id));
    return found == functions.end() ? nullptr : found->second;
}

} // namespace

std::map<std::string, void*> NvmlExports()
{
    return {
        {"nvmlInit_v2", Pointer(&NvmlInit)},
        {"nvmlShutdown", Pointer(&NvmlShutdown)},
        {"nvmlDeviceGetCount_v2", Pointer(&NvmlCount)},
        {"nvmlDeviceGetHandleByIndex_v2", Pointer(&NvmlHandle)},
        {"nvmlDeviceGetPciInfo_v3", Pointer(&NvmlPciInfo)},
        {"nvmlDeviceGetMemoryInfo", Pointer(&NvmlMemory)},
        {"nvmlDeviceGetUUID", Pointer(&NvmlUuid)},
        {"nvmlDeviceGetNumGpuCores", Pointer(&NvmlCores)},
        {"nvmlDeviceGetMemoryBusWidth", Pointer(&NvmlBusWidth)},
        {"nvmlDeviceGetMaxClockInfo", Pointer(&NvmlMaxClock)},
    };
}

std::map<std::string, void*> NvapiExports()
{
    return {{"nvapi_QueryInterface", Pointer(&NvapiQuery)}};
}

} // namespace orvel::shared::inventory
