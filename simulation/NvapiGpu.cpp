#include "NvapiGpu.h"

#include "CurrentMachine.h"
#include "Nvapi.h"
#include "Trace.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <mutex>

// Every function follows one road: trace the call, find the GPU by its handle (the address of its model), look at the
// arguments, give the model's answer. Structures are byte areas with the published offsets.

namespace orvel::simulation {

namespace {

constexpr size_t ShortStringSize = 64; // of names and versions, with the terminator
constexpr size_t MemoryInfoSize = 80;
constexpr uint32_t ClocksVersion = 0x00030108;
constexpr uint32_t EccStatusVersion = 0x00010010;
constexpr uint32_t EccErrorsVersion = 0x00010028;

using MemoryImage = std::array<unsigned char, MemoryInfoSize>;

/// The structure as the last memory query left it: the product passes it on to its second query as it is.
struct LastMemoryInfo {
    std::mutex mutex;
    MemoryImage image{};
};

LastMemoryInfo& TheLastMemoryInfo()
{
    static auto* const last = new LastMemoryInfo;
    return *last;
}

template <typename Word>
void Put(void* area, size_t offset, Word word)
{
    std::memcpy(static_cast<char*>(area) + offset, &word, sizeof word);
}

uint32_t WordAt(const void* area, size_t offset)
{
    uint32_t word = 0;
    std::memcpy(&word, static_cast<const char*>(area) + offset, sizeof word);
    return word;
}

/// Runs `answer` on the model of the GPU that the handle stands for.
template <typename Give>
int32_t OnGpu(const void* handle, Give&& give)
{
    const auto machine = CurrentMachine();
    for (const NvapiGpuModel& gpu : machine->nvapi.model.gpus) {
        if (&gpu == handle)
            return give(gpu);
    }
    return NVAPI_EXPECTED_PHYSICAL_GPU_HANDLE;
}

int32_t GiveText(const char* name, const void* handle, char* target, Answer<std::string> NvapiGpuModel::*member)
{
    AddToTrace(std::string("nvapi ") + name);
    return OnGpu(handle, [&](const NvapiGpuModel& gpu) {
        if (target == nullptr)
            return NVAPI_INVALID_ARGUMENT;
        return (gpu.*member).Give(NVAPI_NOT_SUPPORTED, [target](const std::string& text) {
            std::memset(target, 0, ShortStringSize);
            text.copy(target, ShortStringSize - 1);
        });
    });
}

int32_t GiveNumber(const char* name, const void* handle, int32_t* target, Answer<int32_t> NvapiGpuModel::*member)
{
    AddToTrace(std::string("nvapi ") + name);
    return OnGpu(handle, [&](const NvapiGpuModel& gpu) {
        if (target == nullptr)
            return NVAPI_INVALID_ARGUMENT;
        return (gpu.*member).Give(NVAPI_NOT_SUPPORTED, [target](int32_t number) { *target = number; });
    });
}

/// For a structure that starts with a version word.
template <typename Value, typename Write>
int32_t GiveStructure(const void* handle, void* area, uint32_t version, Answer<Value> NvapiGpuModel::*member, Write&& write)
{
    return OnGpu(handle, [&](const NvapiGpuModel& gpu) {
        if (area == nullptr)
            return NVAPI_INVALID_ARGUMENT;
        if (WordAt(area, 0) != version)
            return NVAPI_INCOMPATIBLE_STRUCT_VERSION;
        return (gpu.*member).Give(NVAPI_NOT_SUPPORTED, write);
    });
}

int32_t GetFullName(void* gpu, char* name)
{
    return GiveText("NvAPI_GPU_GetFullName", gpu, name, &NvapiGpuModel::fullName);
}

int32_t GetVbiosVersionString(void* gpu, char* version)
{
    return GiveText("NvAPI_GPU_GetVbiosVersionString", gpu, version, &NvapiGpuModel::vbiosVersion);
}

int32_t GetBusId(void* gpu, int32_t* id)
{
    return GiveNumber("NvAPI_GPU_GetBusId", gpu, id, &NvapiGpuModel::busId);
}

int32_t GetBusType(void* gpu, int32_t* type)
{
    return GiveNumber("NvAPI_GPU_GetBusType", gpu, type, &NvapiGpuModel::busType);
}

int32_t GetGpuType(void* gpu, int32_t* type)
{
    return GiveNumber("NvAPI_GPU_GetGPUType", gpu, type, &NvapiGpuModel::gpuType);
}

int32_t GetGpuCoreCount(void* gpu, int32_t* count)
{
    return GiveNumber("NvAPI_GPU_GetGpuCoreCount", gpu, count, &NvapiGpuModel::coreCount);
}

int32_t GetRamBusWidth(void* gpu, int32_t* bits)
{
    return GiveNumber("NvAPI_GPU_GetRamBusWidth", gpu, bits, &NvapiGpuModel::ramBusWidth);
}

int32_t GetCurrentPcieDownstreamWidth(void* gpu, int32_t* lanes)
{
    return GiveNumber("NvAPI_GPU_GetCurrentPCIEDownstreamWidth", gpu, lanes, &NvapiGpuModel::pcieWidth);
}

int32_t GetPciIdentifiers(void* handle, uint32_t* device, uint32_t* subsystem, uint32_t* revision, uint32_t* extended)
{
    AddToTrace("nvapi NvAPI_GPU_GetPCIIdentifiers");
    return OnGpu(handle, [&](const NvapiGpuModel& gpu) {
        if (device == nullptr || subsystem == nullptr || revision == nullptr || extended == nullptr)
            return NVAPI_INVALID_ARGUMENT;
        return gpu.pciIdentifiers.Give(NVAPI_NOT_SUPPORTED, [&](const NvapiPciIdentifiers& identifiers) {
            *device = identifiers.device;
            *subsystem = identifiers.subsystem;
            *revision = identifiers.revision;
            *extended = identifiers.extended;
        });
    });
}

int32_t GiveMemoryInfo(const NvapiGpuModel& gpu, void* area)
{
    LastMemoryInfo& last = TheLastMemoryInfo();
    const std::scoped_lock lock(last.mutex);
    const bool isFirst = std::memcmp(area, MemoryImage{}.data(), MemoryInfoSize) == 0;
    if (!isFirst && std::memcmp(area, last.image.data(), MemoryInfoSize) != 0)
        return NVAPI_INCOMPATIBLE_STRUCT_VERSION;
    return gpu.memoryInfo.Give(NVAPI_NOT_SUPPORTED, [&](const NvapiMemoryInfo& memory) {
        Put(area, 32, memory.offset32);
        Put(area, 40, memory.offset40);
        std::memcpy(last.image.data(), area, MemoryInfoSize);
    });
}

// Intended: no version word is asked for, unlike by a real driver. The product passes the structure without one.
int32_t GetMemoryInfoEx(void* handle, void* area)
{
    AddToTrace("nvapi NvAPI_GPU_GetMemoryInfoEx");
    return OnGpu(handle, [area](const NvapiGpuModel& gpu) {
        return area == nullptr ? NVAPI_INVALID_ARGUMENT : GiveMemoryInfo(gpu, area);
    });
}

void PutClock(void* area, size_t domain, const std::optional<uint32_t>& kilohertz)
{
    Put(area, 8 + 8 * domain, uint32_t{kilohertz.has_value()}); // present
    Put(area, 12 + 8 * domain, kilohertz.value_or(0));
}

int32_t GetAllClockFrequencies(void* handle, void* area)
{
    const uint32_t type = area == nullptr ? 0 : WordAt(area, 4) & 0xF;
    AddToTrace("nvapi NvAPI_GPU_GetAllClockFrequencies type=" + std::to_string(type));
    return GiveStructure(handle, area, ClocksVersion, &NvapiGpuModel::clocks, [area](const NvapiClocks& clocks) {
        PutClock(area, 0, clocks.domain0);
        PutClock(area, 4, clocks.domain4);
    });
}

int32_t GetEccStatusInfo(void* handle, void* area)
{
    AddToTrace("nvapi NvAPI_GPU_GetECCStatusInfo");
    return GiveStructure(handle, area, EccStatusVersion, &NvapiGpuModel::eccStatus, [area](const NvapiEccStatus& ecc) {
        Put(area, 4, uint32_t{ecc.supported});
        Put(area, 12, uint32_t{ecc.enabled});
    });
}

int32_t GetEccErrorInfo(void* handle, void* area)
{
    AddToTrace("nvapi NvAPI_GPU_GetECCErrorInfo");
    return GiveStructure(handle, area, EccErrorsVersion, &NvapiGpuModel::eccErrors, [area](const NvapiEccErrors& errors) {
        Put(area, 8, errors.singleBit);
        Put(area, 16, errors.doubleBit);
    });
}

} // namespace

const NvapiFunction* FindNvapiGpuFunction(uint32_t id)
{
    static const NvapiFunction functions[] = {
        {0xCEEE8E9F, "NvAPI_GPU_GetFullName", reinterpret_cast<void*>(&GetFullName)},
        {0x1BE0B8E5, "NvAPI_GPU_GetBusId", reinterpret_cast<void*>(&GetBusId)},
        {0x1BB18724, "NvAPI_GPU_GetBusType", reinterpret_cast<void*>(&GetBusType)},
        {0x2DDFB66E, "NvAPI_GPU_GetPCIIdentifiers", reinterpret_cast<void*>(&GetPciIdentifiers)},
        {0xC33BAEB1, "NvAPI_GPU_GetGPUType", reinterpret_cast<void*>(&GetGpuType)},
        {0xA561FD7D, "NvAPI_GPU_GetVbiosVersionString", reinterpret_cast<void*>(&GetVbiosVersionString)},
        {0xC7026A87, "NvAPI_GPU_GetGpuCoreCount", reinterpret_cast<void*>(&GetGpuCoreCount)},
        {0x7975C581, "NvAPI_GPU_GetRamBusWidth", reinterpret_cast<void*>(&GetRamBusWidth)},
        {0xD048C3B1, "NvAPI_GPU_GetCurrentPCIEDownstreamWidth", reinterpret_cast<void*>(&GetCurrentPcieDownstreamWidth)},
        {0xC0599498, "NvAPI_GPU_GetMemoryInfoEx", reinterpret_cast<void*>(&GetMemoryInfoEx)},
        {0xDCB616C3, "NvAPI_GPU_GetAllClockFrequencies", reinterpret_cast<void*>(&GetAllClockFrequencies)},
        {0xCA1DDAF3, "NvAPI_GPU_GetECCStatusInfo", reinterpret_cast<void*>(&GetEccStatusInfo)},
        {0xC71F85A6, "NvAPI_GPU_GetECCErrorInfo", reinterpret_cast<void*>(&GetEccErrorInfo)},
    };
    const auto* const found = std::ranges::find(functions, id, &NvapiFunction::id);
    return found == std::end(functions) ? nullptr : found;
}

void ResetNvapiMemoryInfo()
{
    LastMemoryInfo& last = TheLastMemoryInfo();
    const std::scoped_lock lock(last.mutex);
    last.image = {};
}

} // namespace orvel::simulation
