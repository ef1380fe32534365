#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "vendors/nvidia/NvapiInterface.h"

namespace orvel::shared::enumeration {

/// A session with NVIDIA's NVAPI, and properties of its physical GPUs.
///
/// A failed call is logged as an error with NVAPI's status, and the getter returns its default.
class NvapiClient {
public:
    /// Initialises NVAPI and lists the GPUs. Throws std::runtime_error ("Failed to initialize NVAPI. Status code: N",
    /// "Failed to enumerate physical GPUs. Status code: N"); afterwards nothing is loaded.
    NvapiClient();
    NvapiClient(const NvapiClient&) = delete;
    NvapiClient& operator=(const NvapiClient&) = delete;
    /// Unloads NVAPI; a failure is logged only.
    ~NvapiClient();

    /// Number of physical GPUs.
    uint32_t GetGpuCount() const { return gpuCount; }

    /// One of NVAPI's 64 GPU handles; null if there is no GPU.
    NvPhysicalGpuHandle GetGpuHandle(size_t index) const { return gpuHandles[index]; }

    /// Full name; "" on failure. Source: NvAPI_GPU_GetFullName.
    std::string GetCardName(NvPhysicalGpuHandle gpu) const;
    /// Full name again; "" on failure. Source: NvAPI_GPU_GetFullName.
    std::string GetChipName(NvPhysicalGpuHandle gpu) const;
    /// PCI bus number; 0 on failure. Source: NvAPI_GPU_GetBusId.
    uint32_t GetBusId(NvPhysicalGpuHandle gpu) const;
    /// "PCI", "AGP", "PCI Express" or "FPCI"; "" on failure. Throws std::out_of_range ("invalid unordered_map<K, T> key")
    /// for any other bus. Source: NvAPI_GPU_GetBusType.
    std::string GetBusInterface(NvPhysicalGpuHandle gpu) const;
    /// PCI device identifier, 4 lower-case hexadecimal digits; "" on failure. Source: NvAPI_GPU_GetPCIIdentifiers.
    std::string GetDeviceId(NvPhysicalGpuHandle gpu) const;
    /// PCI subsystem identifier, such as "397d-1462"; "" on failure. Source: NvAPI_GPU_GetPCIIdentifiers.
    std::string GetSubsystemId(NvPhysicalGpuHandle gpu) const;
    /// "Unknown", "Integrated" or "Discrete"; "UNKNOWN" on failure. Throws std::out_of_range ("invalid unordered_map<K, T>
    /// key") for any other type. Source: NvAPI_GPU_GetGPUType.
    std::string GetGpuType(NvPhysicalGpuHandle gpu) const;
    /// Version of the video BIOS; "" on failure. Source: NvAPI_GPU_GetVbiosVersionString.
    std::string GetBiosVersion(NvPhysicalGpuHandle gpu) const;
    /// Whether two GPUs or more work in SLI; false on failure. Source: NvAPI_D3D11_MultiGPU_GetCaps.
    bool GetNvidiaSli() const;
    /// Whether any GPU works in SLI; false on failure. Source: NvAPI_D3D11_MultiGPU_GetCaps.
    bool GetMultiGpuSupport() const;
    /// Number of CUDA cores; 0 on failure. Source: NvAPI_GPU_GetGpuCoreCount.
    uint32_t GetShaders(NvPhysicalGpuHandle gpu) const;
    /// The same number, from another call; 0 on failure. Source: NvAPI_GPU_GetGpuCoreCount.
    uint32_t GetCores(NvPhysicalGpuHandle gpu) const;
    /// Width of the memory bus in bits; 0 on failure. Source: NvAPI_GPU_GetRamBusWidth.
    uint32_t GetMemoryBusWidth(NvPhysicalGpuHandle gpu) const;
    /// PCI Express lanes at present; 0 on failure. Source: NvAPI_GPU_GetCurrentPCIEDownstreamWidth.
    uint32_t GetPciLanes(NvPhysicalGpuHandle gpu) const;
    /// Low 32 bits of the shared system memory in bytes; 0 on failure. Source: NvAPI_GPU_GetMemoryInfoEx into `info`, which
    /// must be zeroed.
    uint32_t GetMemorySharedSize(NvPhysicalGpuHandle gpu, NvapiMemoryInfo& info) const;
    /// Low 32 bits of the free dedicated memory in bytes; 0 on failure. Source: NvAPI_GPU_GetMemoryInfoEx into `info`, with
    /// the content that GetMemorySharedSize wrote.
    uint32_t GetMemorySize(NvPhysicalGpuHandle gpu, NvapiMemoryInfo& info) const;
    /// Memory clock in MHz; 0 on failure. Source: NvAPI_GPU_GetAllClockFrequencies, clock type 4.
    float GetMemoryBoostClock(NvPhysicalGpuHandle gpu) const;
    /// The same clock, from another call; 0 on failure.
    float GetMemoryClockMax(NvPhysicalGpuHandle gpu) const;
    /// Graphics clock in MHz; 0 on failure. Source: NvAPI_GPU_GetAllClockFrequencies, clock type 0.
    float GetGpuBoostClock(NvPhysicalGpuHandle gpu) const;
    /// The same clock, from another call; 0 on failure.
    float GetGpuClockMax(NvPhysicalGpuHandle gpu) const;
    /// 2 when ECC is enabled, 1 when it is supported, else 0; 0 on failure. Source: NvAPI_GPU_GetECCStatusInfo.
    uint32_t GetEccStatus(NvPhysicalGpuHandle gpu) const;
    /// Low 32 bits of the single-bit errors since start-up; 0 on failure. Source: NvAPI_GPU_GetECCErrorInfo.
    uint32_t GetEccSingleBitErrors(NvPhysicalGpuHandle gpu) const;
    /// Low 32 bits of the double-bit errors since start-up; 0 on failure. Source: NvAPI_GPU_GetECCErrorInfo.
    uint32_t GetEccDoubleBitErrors(NvPhysicalGpuHandle gpu) const;

private:
    NvAPI_Status QueryMultiGpu(NvapiMultiGpuCaps& caps) const;
    NvAPI_Status QueryClock(NvPhysicalGpuHandle gpu, uint32_t clockType, size_t domain, float& megahertz) const;
    NvAPI_Status QueryEccErrors(NvPhysicalGpuHandle gpu, NvapiEccErrorInfo& errors) const;

    NvapiInterface nvapi;
    std::array<NvPhysicalGpuHandle, NVAPI_MAX_PHYSICAL_GPUS> gpuHandles{};
    uint32_t gpuCount = 0;
};

} // namespace orvel::shared::enumeration
