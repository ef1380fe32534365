#include "drivers/nvidia/NvapiGpu.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <mutex>

#include "drivers/nvidia/NvapiSession.h"
#include "loading/DriverState.h"
#include "machine/CurrentMachine.h"
#include "trace/Trace.h"
#include "trace/Violations.h"

// Every function has the same steps: trace the call, find the GPU by its handle, check the arguments, return the model's
// result. Structures are byte areas with the published offsets; bytes that the model does not define are filled with
// rubbish.

namespace orvel::simulation {

namespace {

constexpr size_t shortStringSize = 64; // of names and versions, with the terminator
constexpr size_t memoryInfoSize = 80;
constexpr size_t clockDomains = 32;
constexpr uint32_t clocksVersion = 0x00030108;
constexpr uint32_t logicalGpuVersion = 0x00010238;
constexpr uint32_t eccStatusVersion = 0x00010010;
constexpr uint32_t eccErrorsVersion = 0x00010028;

using MemoryImage = std::array<unsigned char, memoryInfoSize>;

/// The structure that the last memory query filled: the product passes it unchanged to its second query.
struct LastMemoryInfo {
    std::mutex mutex;
    MemoryImage image{};
};

LastMemoryInfo& last = *new LastMemoryInfo;

const DriverState state([] {
    const std::scoped_lock lock(last.mutex);
    last.image = {};
});

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

/// Whether a function works for a GPU that only computes.
bool IsForTcc(const std::string& call)
{
    constexpr std::array calls = {"nvapi NvAPI_GPU_GetFullName", "nvapi NvAPI_GPU_GetBusId", "nvapi NvAPI_GPU_GetBusSlotId",
                                  "nvapi NvAPI_GPU_GetGPUType", "nvapi NvAPI_GPU_GetPCIIdentifiers"};
    return std::ranges::find(calls, call) != calls.end();
}

/// Traces the call and runs `give` on the model of the GPU of this handle. A null handle is not a violation: the caller may
/// have read it from an array element without a GPU.
template <typename Give>
int32_t OnGpu(const std::string& call, const void* handle, Give&& give)
{
    AddToTrace(call, {handle});
    if (!IsInNvapiSession(call)) {
        return NVAPI_API_NOT_INITIALIZED;
    }
    const auto machine = CurrentMachine(); // keeps the model alive
    if (const NvapiGpuModel* const gpu = NvapiHandles().Find(handle)) {
        return gpu->tcc && !IsForTcc(call) ? NVAPI_INVALID_HANDLE : give(*gpu);
    }
    if (handle) {
        AddViolation(call, "the handle is not of this session");
    }
    return NVAPI_EXPECTED_PHYSICAL_GPU_HANDLE;
}

void PutText(char* target, const std::string& text, bool isTerminated)
{
    FillWithRubbish({{target, shortStringSize}});
    const size_t length = text.copy(target, isTerminated ? shortStringSize - 1 : shortStringSize);
    if (isTerminated) {
        target[length] = '\0';
    }
}

int32_t GiveText(const char* name, const void* handle, char* target, Answer<std::string> NvapiGpuModel::*member)
{
    const std::string call = std::string("nvapi ") + name;
    return OnGpu(call, handle, [&](const NvapiGpuModel& gpu) {
        if (!target) {
            return RefuseNull(call);
        }
        const Answer<std::string>& answer = gpu.*member;
        return answer.Give(NVAPI_NOT_SUPPORTED, {{target, shortStringSize}},
                           [&](const std::string& text) { PutText(target, text, answer.writes != Writes::Unterminated); });
    });
}

int32_t GiveNumber(const char* name, const void* handle, int32_t* target, Answer<int32_t> NvapiGpuModel::*member)
{
    const std::string call = std::string("nvapi ") + name;
    return OnGpu(call, handle, [&](const NvapiGpuModel& gpu) {
        if (!target) {
            return RefuseNull(call);
        }
        return (gpu.*member).GiveTo(target, NVAPI_NOT_SUPPORTED);
    });
}

/// For a structure that starts with a version word, whose lower half is the structure's size. Everything after that word is
/// filled with rubbish before `write` runs.
template <typename Value, typename Write>
int32_t GiveStructure(const std::string& call, void* area, uint32_t version, const Answer<Value>& answer, Write&& write)
{
    if (!area) {
        return RefuseNull(call);
    }
    if (WordAt(area, 0) != version) {
        return RefuseVersion(call);
    }
    const size_t size = version & 0xFFFF;
    RecordInput(area, size);
    return answer.Give(NVAPI_NOT_SUPPORTED, {{area, size}}, [&](const Value& value) {
        FillWithRubbish({{static_cast<char*>(area) + sizeof version, size - sizeof version}});
        write(value);
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

int32_t GetBusSlotId(void* gpu, int32_t* id)
{
    return GiveNumber("NvAPI_GPU_GetBusSlotId", gpu, id, &NvapiGpuModel::busSlotId);
}

int32_t GetLogicalGpu(void* handle, void** logical)
{
    const std::string call = "nvapi NvAPI_GetLogicalGPUFromPhysicalGPU";
    return OnGpu(call, handle, [&](const NvapiGpuModel& gpu) {
        if (!logical) {
            return RefuseNull(call);
        }
        const Status& answer = gpu.logicalGpuFromPhysicalGpu;
        const int32_t status = answer.given || gpu.logicalGpuInfo.given ? answer.code : NVAPI_NOT_SUPPORTED;
        if (status == NVAPI_OK) {
            *logical = NvapiLogicalHandles().HandleOf(gpu);
        }
        return status;
    });
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
    const std::string call = "nvapi NvAPI_GPU_GetPCIIdentifiers";
    return OnGpu(call, handle, [&](const NvapiGpuModel& gpu) {
        if (!device || !subsystem || !revision || !extended) {
            return RefuseNull(call);
        }
        return gpu.pciIdentifiers.Give(NVAPI_NOT_SUPPORTED,
                                       {{device, sizeof *device},
                                        {subsystem, sizeof *subsystem},
                                        {revision, sizeof *revision},
                                        {extended, sizeof *extended}},
                                       [&](const NvapiPciIdentifiers& identifiers) {
                                           *device = identifiers.device;
                                           *subsystem = identifiers.subsystem;
                                           *revision = identifiers.revision;
                                           *extended = identifiers.extended;
                                       });
    });
}

int32_t GiveMemoryInfo(const std::string& call, const NvapiGpuModel& gpu, void* area)
{
    RecordInput(area, memoryInfoSize);
    const std::scoped_lock lock(last.mutex);
    const bool isFirst = std::memcmp(area, MemoryImage{}.data(), memoryInfoSize) == 0;
    if (!isFirst && std::memcmp(area, last.image.data(), memoryInfoSize) != 0) {
        return RefuseVersion(call);
    }
    const int32_t status =
        gpu.memoryInfo.Give(NVAPI_NOT_SUPPORTED, {{area, memoryInfoSize}}, [&](const NvapiMemoryInfo& memory) {
            FillWithRubbish({{static_cast<char*>(area) + 8, memoryInfoSize - 8}});
            Put(area, 32, memory.offset32);
            Put(area, 40, memory.offset40);
        });
    std::memcpy(last.image.data(), area, memoryInfoSize);
    return status;
}

// Intended: unlike a real driver, this accepts a structure without a version word, as the product passes it. A machine file
// can refuse the call.
int32_t GetMemoryInfoEx(void* handle, void* area)
{
    const std::string call = "nvapi NvAPI_GPU_GetMemoryInfoEx";
    return OnGpu(call, handle,
                 [&](const NvapiGpuModel& gpu) { return area ? GiveMemoryInfo(call, gpu, area) : RefuseNull(call); });
}

void PutClock(void* area, size_t domain, const NvapiClock& clock)
{
    Put(area, 8 + 8 * domain, uint32_t{clock.present});
    Put(area, 12 + 8 * domain, clock.kilohertz);
}

/// Domains that the file does not list are not present, and their frequency is rubbish.
void PutClocks(void* area, uint32_t type, const NvapiClocks& clocks)
{
    Put(area, 4, type);
    for (size_t domain = 0; domain < clockDomains; ++domain) {
        Put(area, 8 + 8 * domain, uint32_t{0});
    }
    PutClock(area, 0, clocks.domain0);
    PutClock(area, 4, clocks.domain4);
}

int32_t GiveClocks(const std::string& call, const NvapiClockAnswers& clocks, uint32_t type, void* area)
{
    const bool isKnown = clocks.byType.empty() || clocks.byType.contains(type);
    if (!isKnown) {
        return NVAPI_INVALID_ARGUMENT;
    }
    return GiveStructure(call, area, clocksVersion, clocks.byType.empty() ? clocks.ofAll : clocks.byType.at(type),
                         [&](const NvapiClocks& given) { PutClocks(area, type, given); });
}

int32_t GetAllClockFrequencies(void* handle, void* area)
{
    const uint32_t word = area ? WordAt(area, 4) : 0;
    const uint32_t type = word & 0xF;
    const std::string call = "nvapi NvAPI_GPU_GetAllClockFrequencies type=" + std::to_string(type);
    return OnGpu(call, handle, [&](const NvapiGpuModel& gpu) {
        if (type != word) {
            return Refuse(call, "reserved bits are not 0", NVAPI_INVALID_ARGUMENT);
        }
        return GiveClocks(call, gpu.clocks, type, area);
    });
}

int32_t GetEccStatusInfo(void* handle, void* area)
{
    const std::string call = "nvapi NvAPI_GPU_GetECCStatusInfo";
    return OnGpu(call, handle, [&](const NvapiGpuModel& gpu) {
        if (area && ((WordAt(area, 4) | WordAt(area, 12)) & ~1U) != 0) {
            return Refuse(call, "reserved bits are not 0", NVAPI_INVALID_ARGUMENT);
        }
        return GiveStructure(call, area, eccStatusVersion, gpu.eccStatus, [area](const NvapiEccStatus& ecc) {
            Put(area, 4, ecc.supported);
            Put(area, 12, ecc.enabled);
        });
    });
}

int32_t GetEccErrorInfo(void* handle, void* area)
{
    const std::string call = "nvapi NvAPI_GPU_GetECCErrorInfo";
    return OnGpu(call, handle, [&](const NvapiGpuModel& gpu) {
        return GiveStructure(call, area, eccErrorsVersion, gpu.eccErrors, [area](const NvapiEccErrors& errors) {
            Put(area, 8, errors.singleBit);
            Put(area, 16, errors.doubleBit);
        });
    });
}

/// Writes the LUID to the address in the structure.
int32_t GetLogicalGpuInfo(void* handle, void* area)
{
    const std::string call = "nvapi NvAPI_GPU_GetLogicalGpuInfo";
    AddToTrace(call, {handle});
    if (!IsInNvapiSession(call)) {
        return NVAPI_API_NOT_INITIALIZED;
    }
    const auto machine = CurrentMachine(); // holds the model
    const NvapiGpuModel* const gpu = NvapiLogicalHandles().Find(handle);
    if (!gpu) {
        return Refuse(call, "the handle is not a logical GPU of this session", NVAPI_EXPECTED_LOGICAL_GPU_HANDLE);
    }
    uint64_t* luid = nullptr;
    if (area) {
        std::memcpy(&luid, static_cast<char*>(area) + 8, sizeof luid);
    }
    if (!luid) {
        return RefuseNull(call);
    }
    return GiveStructure(call, area, logicalGpuVersion, gpu->logicalGpuInfo, [&](const NvapiLogicalGpu& info) {
        *luid = info.luid;
        Put(area, 8, luid);
        Put(area, 16, info.physicalGpuCount);
    });
}

} // namespace

const NvapiFunction* FindNvapiGpuFunction(uint32_t id)
{
    static const NvapiFunction functions[] = {
        {0xCEEE8E9F, "NvAPI_GPU_GetFullName", reinterpret_cast<void*>(&GetFullName)},
        {0x1BE0B8E5, "NvAPI_GPU_GetBusId", reinterpret_cast<void*>(&GetBusId)},
        {0x2A0A350F, "NvAPI_GPU_GetBusSlotId", reinterpret_cast<void*>(&GetBusSlotId)},
        {0xADD604D1, "NvAPI_GetLogicalGPUFromPhysicalGPU", reinterpret_cast<void*>(&GetLogicalGpu)},
        {0x842B066E, "NvAPI_GPU_GetLogicalGpuInfo", reinterpret_cast<void*>(&GetLogicalGpuInfo)},
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

} // namespace orvel::simulation
