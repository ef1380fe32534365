// Each getter makes one NVAPI call and converts its result for the record. The getters themselves log, because each line
// carries its getter's name. Intended: the boost and the maximum clock, cores and shaders, and the two names are separate,
// identical calls.

#include "vendors/nvidia/NvapiClient.h"

#include <cstring>
#include <stdexcept>
#include <unordered_map>

#include "formulas/NameOf.h"
#include "formulas/RunFailure.h"
#include "platform/Log.h"
#include "vendors/nvidia/NvidiaFormulas.h"

namespace orvel::shared::enumeration {

namespace {

constexpr uint32_t graphicsClockType = 0;
constexpr uint32_t memoryClockType = 4; // Intended: not one of NVAPI's published types.

// The buffers for NVAPI's texts.
char cardName[NVAPI_SHORT_STRING_MAX];
char chipName[NVAPI_SHORT_STRING_MAX];
char biosVersion[NVAPI_SHORT_STRING_MAX];

const std::unordered_map<int32_t, std::string> busTypeNames = {{1, "PCI"}, {2, "AGP"}, {3, "PCI Express"}, {4, "FPCI"}};
const std::unordered_map<int32_t, std::string> gpuTypeNames = {{0, "Unknown"}, {1, "Integrated"}, {2, "Discrete"}};

template <size_t Size>
std::string TextOf(const char (&buffer)[Size])
{
    return std::string(buffer, ::strnlen(buffer, Size));
}

} // namespace

NvapiClient::NvapiClient()
{
    if (const NvAPI_Status status = nvapi.NvAPI_Initialize(); status != NVAPI_OK) {
        PLOGE << "Failed to initialize NvAPI. Status code: " << status;
        // Intended: the log line writes NvAPI, the exception NVAPI.
        throw std::runtime_error(MessageOf(RunFailure::NoNvapi, status));
    }
    if (const NvAPI_Status status = nvapi.NvAPI_EnumPhysicalGPUs(gpuHandles.data(), &gpuCount); status != NVAPI_OK) {
        PLOGE << "Failed to enumerate physical GPUs. Status code: " << status;
        nvapi.NvAPI_Unload(); // before anything that may throw: no destructor runs if the constructor throws
        throw std::runtime_error(MessageOf(RunFailure::NoPhysicalGpus, status));
    }
    PLOGI << "NVAPI initialized successfully";
}

NvapiClient::~NvapiClient()
{
    if (const NvAPI_Status status = nvapi.NvAPI_Unload(); status != NVAPI_OK) {
        PLOGE << "Failed to unload NVAPI. Status code: " << status;
    }
    PLOGI << "NVAPI unloaded successfully"; // Intended: after a failure too.
}

std::string NvapiClient::GetCardName(NvPhysicalGpuHandle gpu) const
{
    const NvAPI_Status status = nvapi.NvAPI_GPU_GetFullName(gpu, cardName);
    if (status == NVAPI_OK) {
        return TextOf(cardName);
    }
    PLOGE << "Failed to get GPU name. Status code: " << status;
    return {};
}

std::string NvapiClient::GetChipName(NvPhysicalGpuHandle gpu) const
{
    const NvAPI_Status status = nvapi.NvAPI_GPU_GetFullName(gpu, chipName);
    if (status == NVAPI_OK) {
        return TextOf(chipName);
    }
    PLOGE << "Failed to get chip name. Status code: " << status;
    return {};
}

uint32_t NvapiClient::GetBusId(NvPhysicalGpuHandle gpu) const
{
    uint32_t bus = 0;
    const NvAPI_Status status = nvapi.NvAPI_GPU_GetBusId(gpu, &bus);
    if (status == NVAPI_OK) {
        return bus;
    }
    PLOGE << "Failed to get GPU bus ID. Status code: " << status;
    return 0;
}

std::string NvapiClient::GetBusInterface(NvPhysicalGpuHandle gpu) const
{
    int32_t type = 0;
    const NvAPI_Status status = nvapi.NvAPI_GPU_GetBusType(gpu, &type);
    if (status == NVAPI_OK) {
        return NameOf(busTypeNames, type);
    }
    PLOGE << "Failed to get bus interface. Status code: " << status;
    return {};
}

std::string NvapiClient::GetDeviceId(NvPhysicalGpuHandle gpu) const
{
    uint32_t device = 0;
    uint32_t subsystem = 0;
    uint32_t revision = 0;
    uint32_t extendedDevice = 0;
    const NvAPI_Status status = nvapi.NvAPI_GPU_GetPCIIdentifiers(gpu, &device, &subsystem, &revision, &extendedDevice);
    if (status == NVAPI_OK) {
        return NvidiaDeviceId(device);
    }
    PLOGE << "Failed to get GPU Device ID. Status code: " << status;
    return {};
}

std::string NvapiClient::GetSubsystemId(NvPhysicalGpuHandle gpu) const
{
    uint32_t device = 0;
    uint32_t subsystem = 0;
    uint32_t revision = 0;
    uint32_t extendedDevice = 0;
    const NvAPI_Status status = nvapi.NvAPI_GPU_GetPCIIdentifiers(gpu, &device, &subsystem, &revision, &extendedDevice);
    if (status == NVAPI_OK) {
        return NvidiaSubsystemId(subsystem);
    }
    PLOGE << "Failed to get GPU subsystem ID. Status code: " << status;
    return {};
}

std::string NvapiClient::GetGpuType(NvPhysicalGpuHandle gpu) const
{
    int32_t type = 0;
    const NvAPI_Status status = nvapi.NvAPI_GPU_GetGPUType(gpu, &type);
    if (status == NVAPI_OK) {
        return NameOf(gpuTypeNames, type);
    }
    PLOGE << "Failed to get GPU type. Status code: " << status;
    return "UNKNOWN"; // Intended: the table has "Unknown".
}

std::string NvapiClient::GetBiosVersion(NvPhysicalGpuHandle gpu) const
{
    const NvAPI_Status status = nvapi.NvAPI_GPU_GetVbiosVersionString(gpu, biosVersion);
    if (status == NVAPI_OK) {
        return TextOf(biosVersion);
    }
    PLOGE << "Failed to get GPU BIOS version. Status code: " << status;
    return {};
}

NvAPI_Status NvapiClient::QueryMultiGpu(NvapiMultiGpuCaps& caps) const
{
    caps = {};
    caps.Version = NvapiVersion<NvapiMultiGpuCaps>(2); // Intended: in the second word, the first stays 0.
    return nvapi.NvAPI_D3D11_MultiGPU_GetCaps(&caps);
}

bool NvapiClient::GetNvidiaSli() const
{
    NvapiMultiGpuCaps caps;
    const NvAPI_Status status = QueryMultiGpu(caps);
    if (status == NVAPI_OK) {
        return caps.TotalGpus >= 2 && caps.SliGpus >= 2;
    }
    PLOGE << "Failed to get NVIDIA SLI status. Status code: " << status;
    return false;
}

bool NvapiClient::GetMultiGpuSupport() const
{
    NvapiMultiGpuCaps caps;
    const NvAPI_Status status = QueryMultiGpu(caps);
    if (status == NVAPI_OK) {
        return caps.SliGpus != 0;
    }
    PLOGE << "Failed to get NVIDIA MultiGPU Support. Status code: " << status;
    return false;
}

uint32_t NvapiClient::GetShaders(NvPhysicalGpuHandle gpu) const
{
    uint32_t count = 0;
    const NvAPI_Status status = nvapi.NvAPI_GPU_GetGpuCoreCount(gpu, &count);
    if (status == NVAPI_OK) {
        return count;
    }
    PLOGE << "Failed to get GPU shaders. Status code: " << status;
    return 0;
}

uint32_t NvapiClient::GetCores(NvPhysicalGpuHandle gpu) const
{
    uint32_t count = 0;
    const NvAPI_Status status = nvapi.NvAPI_GPU_GetGpuCoreCount(gpu, &count);
    if (status == NVAPI_OK) {
        return count;
    }
    PLOGE << "Failed to get GPU cores. Status code: " << status;
    return 0;
}

uint32_t NvapiClient::GetMemoryBusWidth(NvPhysicalGpuHandle gpu) const
{
    uint32_t bits = 0;
    const NvAPI_Status status = nvapi.NvAPI_GPU_GetRamBusWidth(gpu, &bits);
    if (status == NVAPI_OK) {
        return bits;
    }
    PLOGE << "Failed to get GPU Memory Bus Width. Status code: " << status;
    return 0;
}

uint32_t NvapiClient::GetPciLanes(NvPhysicalGpuHandle gpu) const
{
    uint32_t lanes = 0;
    const NvAPI_Status status = nvapi.NvAPI_GPU_GetCurrentPCIEDownstreamWidth(gpu, &lanes);
    if (status == NVAPI_OK) {
        return lanes;
    }
    PLOGE << "Failed to get GPU PCI lanes. Status code: " << status;
    return 0;
}

// Intended: the memory structure carries no version word, and is not cleared between the two calls.
uint32_t NvapiClient::GetMemorySharedSize(NvPhysicalGpuHandle gpu, NvapiMemoryInfo& info) const
{
    const NvAPI_Status status = nvapi.NvAPI_GPU_GetMemoryInfoEx(gpu, &info);
    if (status == NVAPI_OK) {
        return static_cast<uint32_t>(info.SharedSystemMemory);
    }
    PLOGE << "Failed to get shared memory size. Status code: " << status;
    return 0;
}

uint32_t NvapiClient::GetMemorySize(NvPhysicalGpuHandle gpu, NvapiMemoryInfo& info) const
{
    const NvAPI_Status status = nvapi.NvAPI_GPU_GetMemoryInfoEx(gpu, &info);
    if (status == NVAPI_OK) {
        return static_cast<uint32_t>(info.CurrentAvailableDedicatedVideoMemory);
    }
    PLOGE << "Failed to get memory size. Status code: " << status;
    return 0;
}

NvAPI_Status NvapiClient::QueryClock(NvPhysicalGpuHandle gpu, uint32_t clockType, size_t domain, float& megahertz) const
{
    NvapiClockFrequencies clocks{};
    clocks.Version = NvapiVersion<NvapiClockFrequencies>(3);
    clocks.ClockType = clockType;
    const NvAPI_Status status = nvapi.NvAPI_GPU_GetAllClockFrequencies(gpu, &clocks);
    if (status == NVAPI_OK) {
        megahertz = ToMegahertz(clocks.Domains[domain].Kilohertz);
    }
    return status;
}

float NvapiClient::GetMemoryBoostClock(NvPhysicalGpuHandle gpu) const
{
    float megahertz = 0.0F;
    const NvAPI_Status status = QueryClock(gpu, memoryClockType, NVAPI_GPU_PUBLIC_CLOCK_MEMORY, megahertz);
    if (status != NVAPI_OK) {
        PLOGE << "Failed to get GPU clock frequencies. Status code: " << status;
    }
    return megahertz;
}

float NvapiClient::GetMemoryClockMax(NvPhysicalGpuHandle gpu) const
{
    float megahertz = 0.0F;
    const NvAPI_Status status = QueryClock(gpu, memoryClockType, NVAPI_GPU_PUBLIC_CLOCK_MEMORY, megahertz);
    if (status != NVAPI_OK) {
        PLOGE << "Failed to get GPU clock frequencies. Status code: " << status;
    }
    return megahertz;
}

float NvapiClient::GetGpuBoostClock(NvPhysicalGpuHandle gpu) const
{
    float megahertz = 0.0F;
    const NvAPI_Status status = QueryClock(gpu, graphicsClockType, NVAPI_GPU_PUBLIC_CLOCK_GRAPHICS, megahertz);
    if (status != NVAPI_OK) {
        PLOGE << "Failed to get GPU clock frequencies. Status code: " << status;
    }
    return megahertz;
}

float NvapiClient::GetGpuClockMax(NvPhysicalGpuHandle gpu) const
{
    float megahertz = 0.0F;
    const NvAPI_Status status = QueryClock(gpu, graphicsClockType, NVAPI_GPU_PUBLIC_CLOCK_GRAPHICS, megahertz);
    if (status != NVAPI_OK) {
        PLOGE << "Failed to get GPU clock frequencies. Status code: " << status;
    }
    return megahertz;
}

uint32_t NvapiClient::GetEccStatus(NvPhysicalGpuHandle gpu) const
{
    NvapiEccStatusInfo info{};
    info.Version = NvapiVersion<NvapiEccStatusInfo>(1);
    const NvAPI_Status status = nvapi.NvAPI_GPU_GetECCStatusInfo(gpu, &info);
    if (status != NVAPI_OK) {
        PLOGE << "Failed to get GPU ECC status. Status code: " << status;
        return 0;
    }
    if (info.Enabled & 1) {
        return 2;
    }
    return info.Supported & 1;
}

NvAPI_Status NvapiClient::QueryEccErrors(NvPhysicalGpuHandle gpu, NvapiEccErrorInfo& errors) const
{
    errors = {};
    errors.Version = NvapiVersion<NvapiEccErrorInfo>(1);
    return nvapi.NvAPI_GPU_GetECCErrorInfo(gpu, &errors);
}

uint32_t NvapiClient::GetEccSingleBitErrors(NvPhysicalGpuHandle gpu) const
{
    NvapiEccErrorInfo errors;
    const NvAPI_Status status = QueryEccErrors(gpu, errors);
    if (status == NVAPI_OK) {
        return static_cast<uint32_t>(errors.CurrentSingleBitErrors);
    }
    PLOGE << "Failed to get GPU ECC error info. Status code: " << status;
    return 0;
}

uint32_t NvapiClient::GetEccDoubleBitErrors(NvPhysicalGpuHandle gpu) const
{
    NvapiEccErrorInfo errors;
    const NvAPI_Status status = QueryEccErrors(gpu, errors);
    if (status == NVAPI_OK) {
        return static_cast<uint32_t>(errors.CurrentDoubleBitErrors);
    }
    PLOGE << "Failed to get GPU ECC error info. Status code: " << status;
    return 0;
}

} // namespace orvel::shared::enumeration
