#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "vendors/nvidia/Nvml.h"

namespace orvel::shared::enumeration {

/// A session with NVIDIA's Management Library, and properties of its devices.
///
/// A failed call is logged as an error with NVML's text, and the getter returns its default; so does every getter for a
/// null device.
class NvmlClient {
public:
    /// Initialises NVML and gets a handle for every device. Throws std::runtime_error ("Failed to initialize NVML. Status
    /// code: N", "Failed to shutdown NVML. Status code: N"), and std::bad_alloc when memory is exhausted; NVML is then
    /// closed. If the device count cannot be read, or is above 65,536, the client has no devices.
    NvmlClient();
    NvmlClient(const NvmlClient&) = delete;
    NvmlClient& operator=(const NvmlClient&) = delete;
    /// Shuts NVML down; a failure is logged only.
    ~NvmlClient();

    /// The device at an index; null, and an error line, if there are fewer; null for a device whose handle NVML did not
    /// return.
    nvmlDevice_t GetGpuHandle(uint32_t index) const;

    /// Serial number; "Unknown" on failure. Source: nvmlDeviceGetSerial.
    std::string GetGraphicCardSerialNumber(nvmlDevice_t device) const;
    /// Compute capability such as 8.6; 0 on failure. Source: nvmlDeviceGetCudaComputeCapability.
    float GetCudaCapability(nvmlDevice_t device) const;
    /// Maximum operating temperature in degrees Celsius; 0 on failure. Source: nvmlDeviceGetTemperatureThreshold, GPU_MAX.
    unsigned int GetMaxTemperature(nvmlDevice_t device) const;
    /// Slowdown temperature in degrees Celsius; 0 on failure. Source: nvmlDeviceGetTemperatureThreshold, SLOWDOWN.
    unsigned int GetTemperatureSlowdown(nvmlDevice_t device) const;
    /// Shutdown temperature in degrees Celsius; 0 on failure. Source: nvmlDeviceGetTemperatureThreshold, SHUTDOWN.
    unsigned int GetTemperatureShutdown(nvmlDevice_t device) const;
    /// PCI Express generation at present; 0 on failure. Source: nvmlDeviceGetCurrPcieLinkGeneration.
    float GetPcieGeneration(nvmlDevice_t device) const;
    /// Highest PCI Express transfer rate in MB/s; 0 on failure, and for a generation above 5. Sources:
    /// nvmlDeviceGetMaxPcieLinkGeneration, nvmlDeviceGetMaxPcieLinkWidth.
    float GetPcieTransferRate(nvmlDevice_t device) const;
    /// Memory bandwidth in GB/s; 0 on failure. Sources: nvmlDeviceGetClockInfo, nvmlDeviceGetMemoryBusWidth.
    float GetMemoryBandwidth(nvmlDevice_t device) const;

private:
    std::vector<nvmlDevice_t> deviceHandles;
};

} // namespace orvel::shared::enumeration
