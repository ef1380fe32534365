#pragma once

#include <cstddef>
#include <cstdint>

namespace orvel::shared::enumeration {

// NVAPI as its driver publishes it: every function is looked up by a 32-bit id and returns a signed status, 0 for success.

using NvAPI_Status = int32_t;
using NvPhysicalGpuHandle = void*;

constexpr NvAPI_Status NVAPI_OK = 0;
constexpr NvAPI_Status NVAPI_ERROR = -1;
constexpr NvAPI_Status NVAPI_LIBRARY_NOT_FOUND = -2;
constexpr NvAPI_Status NVAPI_NO_IMPLEMENTATION = -3;
constexpr NvAPI_Status NVAPI_NVIDIA_DEVICE_NOT_FOUND = -6;
constexpr NvAPI_Status NVAPI_NOT_SUPPORTED = -104;

/// The ids of the functions that are used, for the one that the DLL exports (nvapi_QueryInterface).
enum class NvapiId : uint32_t {
    NvAPI_Initialize = 0x0150E828,
    NvAPI_Unload = 0xD22BDD7E,
    NvAPI_EnumPhysicalGPUs = 0xE5AC921F,
    NvAPI_GPU_GetFullName = 0xCEEE8E9F,
    NvAPI_GPU_GetBusId = 0x1BE0B8E5,
    NvAPI_GPU_GetBusType = 0x1BB18724,
    NvAPI_GPU_GetPCIIdentifiers = 0x2DDFB66E,
    NvAPI_GPU_GetGPUType = 0xC33BAEB1,
    NvAPI_GPU_GetVbiosVersionString = 0xA561FD7D,
    NvAPI_GPU_GetGpuCoreCount = 0xC7026A87,
    NvAPI_GPU_GetRamBusWidth = 0x7975C581,
    NvAPI_GPU_GetCurrentPCIEDownstreamWidth = 0xD048C3B1,
    NvAPI_GPU_GetMemoryInfoEx = 0xC0599498,
    NvAPI_GPU_GetAllClockFrequencies = 0xDCB616C3,
    NvAPI_GPU_GetECCStatusInfo = 0xCA1DDAF3,
    NvAPI_GPU_GetECCErrorInfo = 0xC71F85A6,
    NvAPI_D3D11_MultiGPU_GetCaps = 0xD2D25687,
    NvAPI_EnumTCCPhysicalGPUs = 0xD9930B07,
    NvAPI_GPU_GetBusSlotId = 0x2A0A350F,
    NvAPI_GetLogicalGPUFromPhysicalGPU = 0xADD604D1,
    NvAPI_GPU_GetLogicalGpuInfo = 0x842B066E,
};

constexpr size_t NVAPI_SHORT_STRING_MAX = 64;
constexpr size_t NVAPI_MAX_PHYSICAL_GPUS = 64;
constexpr size_t NVAPI_MAX_GPU_PUBLIC_CLOCKS = 32;

/// The version word of a structure: its size, and its version above.
template <typename Structure>
constexpr uint32_t NvapiVersion(uint32_t version)
{
    return static_cast<uint32_t>(sizeof(Structure)) | version << 16;
}

struct NvapiEccErrorInfo {
    uint32_t Version;
    uint32_t Padding; ///< named, so that zeroing the structure zeroes it too
    uint64_t CurrentSingleBitErrors;
    uint64_t CurrentDoubleBitErrors;
    uint64_t AggregateSingleBitErrors;
    uint64_t AggregateDoubleBitErrors;
};
static_assert(sizeof(NvapiEccErrorInfo) == 40 && offsetof(NvapiEccErrorInfo, CurrentSingleBitErrors) == 8 &&
              NvapiVersion<NvapiEccErrorInfo>(1) == 0x00010028);

struct NvapiEccStatusInfo {
    uint32_t Version;
    uint32_t Supported; ///< bit 0
    uint32_t ConfigurationOptions;
    uint32_t Enabled; ///< bit 0
};
static_assert(sizeof(NvapiEccStatusInfo) == 16 && NvapiVersion<NvapiEccStatusInfo>(1) == 0x00010010);

struct NvapiMultiGpuCaps {
    uint32_t MultiGpuVersion;
    uint32_t Version; ///< not the first word
    uint32_t TotalGpus;
    uint32_t SliGpus;
    uint32_t VideoBridgePresent;
    uint32_t NvLinkPresent;
    uint32_t FastNvLinkReads;
};
static_assert(sizeof(NvapiMultiGpuCaps) == 28 && NvapiVersion<NvapiMultiGpuCaps>(2) == 0x0002001C);

struct NvapiMemoryInfo {
    uint32_t Version;
    uint32_t Padding; ///< named, so that zeroing the structure zeroes it too
    uint64_t DedicatedVideoMemory;
    uint64_t AvailableDedicatedVideoMemory;
    uint64_t SystemVideoMemory;
    uint64_t SharedSystemMemory;
    uint64_t CurrentAvailableDedicatedVideoMemory;
    uint64_t DedicatedVideoMemoryEvictionsSize;
    uint64_t DedicatedVideoMemoryEvictionCount;
    uint64_t DedicatedVideoMemoryPromotionsSize;
    uint64_t DedicatedVideoMemoryPromotionCount;
};
static_assert(sizeof(NvapiMemoryInfo) == 80 && offsetof(NvapiMemoryInfo, SharedSystemMemory) == 32 &&
              offsetof(NvapiMemoryInfo, CurrentAvailableDedicatedVideoMemory) == 40);

struct NvapiClockDomain {
    uint32_t IsPresent; ///< bit 0
    uint32_t Kilohertz;
};

struct NvapiClockFrequencies {
    uint32_t Version;
    uint32_t ClockType; ///< low four bits
    NvapiClockDomain Domains[NVAPI_MAX_GPU_PUBLIC_CLOCKS];
};
static_assert(sizeof(NvapiClockFrequencies) == 264 && NvapiVersion<NvapiClockFrequencies>(3) == 0x00030108);

constexpr uint32_t NVAPI_GPU_CLOCK_TYPE_BOOST = 2;
constexpr size_t NVAPI_GPU_PUBLIC_CLOCK_GRAPHICS = 0;
constexpr size_t NVAPI_GPU_PUBLIC_CLOCK_MEMORY = 4;

constexpr int32_t NV_SYSTEM_TYPE_IGPU = 1;
constexpr int32_t NV_SYSTEM_TYPE_DGPU = 2;

struct NvapiLogicalGpuInfo {
    uint32_t Version;
    void* Luid; ///< a LUID of the caller's, which the call fills
    uint32_t PhysicalGpuCount;
    NvPhysicalGpuHandle PhysicalGpus[NVAPI_MAX_PHYSICAL_GPUS];
    uint32_t Reserved[8];
};
static_assert(sizeof(NvapiLogicalGpuInfo) == 568 && offsetof(NvapiLogicalGpuInfo, PhysicalGpus) == 24 &&
              NvapiVersion<NvapiLogicalGpuInfo>(1) == 0x00010238);

} // namespace orvel::shared::enumeration
