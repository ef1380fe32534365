#include "vendors/nvidia/NvmlClient.h"

#include <cstring>
#include <stdexcept>

#include "formulas/RunFailure.h"
#include "platform/Counts.h"
#include "platform/Log.h"
#include "vendors/nvidia/NvidiaFormulas.h"

namespace orvel::shared::enumeration {

namespace {

char serialNumber[NVML_DEVICE_SERIAL_BUFFER_SIZE]; // the buffer for NVML

/// The number of devices; an impossible number is treated as an unknown error.
nvmlReturn_t CountDevices(unsigned int& count)
{
    const nvmlReturn_t status = nvmlDeviceGetCount_v2(&count);
    return status == NVML_SUCCESS && !IsBelievable(count) ? NVML_ERROR_UNKNOWN : status;
}

} // namespace

NvmlClient::NvmlClient()
{
    if (const nvmlReturn_t status = nvmlInit_v2(); status != NVML_SUCCESS) {
        throw std::runtime_error(MessageOf(RunFailure::NoNvml, status));
    }
    unsigned int count = 0;
    if (const nvmlReturn_t status = CountDevices(count); status != NVML_SUCCESS) {
        count = 0;
        PLOGE << "Failed to get device count: " << nvmlErrorString(status) << '\n';
        if (const nvmlReturn_t shutdown = nvmlShutdown(); shutdown != NVML_SUCCESS) {
            throw std::runtime_error(MessageOf(RunFailure::NvmlStaysOpen, shutdown));
        }
        PLOGI << "NVML shutdown successfully";
    }
    try {
        deviceHandles.resize(count);
    } catch (...) {
        nvmlShutdown(); // no destructor runs if the constructor throws
        throw;
    }
    for (unsigned int index = 0; index < count; ++index) {
        if (const nvmlReturn_t status = nvmlDeviceGetHandleByIndex_v2(index, &deviceHandles[index]);
            status != NVML_SUCCESS) {
            deviceHandles[index] = nullptr;
            PLOGE << "Failed to get handle for device " << index << ": " << nvmlErrorString(status);
        }
    }
    PLOGI << "NVML initialized successfully"; // Intended: also when NVML was shut down above.
}

// Intended: shuts NVML down even if the constructor already did.
NvmlClient::~NvmlClient()
{
    if (const nvmlReturn_t status = nvmlShutdown(); status != NVML_SUCCESS) {
        PLOGE << "Failed to shutdown NVML. Status code: " << status;
    }
    PLOGI << "NVML shutdown successfully"; // Intended: after a failure too.
}

nvmlDevice_t NvmlClient::GetGpuHandle(uint32_t index) const
{
    if (index < deviceHandles.size()) {
        return deviceHandles[index];
    }
    PLOGE << "Invalid index: " << index;
    return nullptr;
}

std::string NvmlClient::GetGraphicCardSerialNumber(nvmlDevice_t device) const
{
    const nvmlReturn_t status = nvmlDeviceGetSerial(device, serialNumber, sizeof(serialNumber));
    if (status == NVML_SUCCESS) {
        return std::string(serialNumber, ::strnlen(serialNumber, sizeof(serialNumber)));
    }
    PLOGE << "Failed to get graphics card serial number: " << nvmlErrorString(status);
    return "Unknown";
}

float NvmlClient::GetCudaCapability(nvmlDevice_t device) const
{
    int major = 0;
    int minor = 0;
    const nvmlReturn_t status = nvmlDeviceGetCudaComputeCapability(device, &major, &minor);
    if (status == NVML_SUCCESS) {
        return CudaCapability(major, minor);
    }
    PLOGE << "Failed to get CUDA compute capability: " << nvmlErrorString(status);
    return 0.0F;
}

unsigned int NvmlClient::GetMaxTemperature(nvmlDevice_t device) const
{
    unsigned int celsius = 0;
    const nvmlReturn_t status = nvmlDeviceGetTemperatureThreshold(device, NVML_TEMPERATURE_THRESHOLD_GPU_MAX, &celsius);
    if (status == NVML_SUCCESS) {
        return celsius;
    }
    PLOGE << "Failed to get max temperature: " << nvmlErrorString(status);
    return 0;
}

unsigned int NvmlClient::GetTemperatureSlowdown(nvmlDevice_t device) const
{
    unsigned int celsius = 0;
    const nvmlReturn_t status = nvmlDeviceGetTemperatureThreshold(device, NVML_TEMPERATURE_THRESHOLD_SLOWDOWN, &celsius);
    if (status == NVML_SUCCESS) {
        return celsius;
    }
    PLOGE << "Failed to get temperature slowdown: " << nvmlErrorString(status);
    return 0;
}

unsigned int NvmlClient::GetTemperatureShutdown(nvmlDevice_t device) const
{
    unsigned int celsius = 0;
    const nvmlReturn_t status = nvmlDeviceGetTemperatureThreshold(device, NVML_TEMPERATURE_THRESHOLD_SHUTDOWN, &celsius);
    if (status == NVML_SUCCESS) {
        return celsius;
    }
    PLOGE << "Failed to get temperature shutdown: " << nvmlErrorString(status);
    return 0;
}

float NvmlClient::GetPcieGeneration(nvmlDevice_t device) const
{
    unsigned int generation = 0;
    const nvmlReturn_t status = nvmlDeviceGetCurrPcieLinkGeneration(device, &generation);
    if (status == NVML_SUCCESS) {
        return static_cast<float>(generation);
    }
    PLOGE << "Failed to get PCIe generation: " << nvmlErrorString(status) << '\n';
    return 0.0F;
}

float NvmlClient::GetPcieTransferRate(nvmlDevice_t device) const
{
    unsigned int generation = 0;
    unsigned int lanes = 0;
    if (const nvmlReturn_t status = nvmlDeviceGetMaxPcieLinkGeneration(device, &generation); status != NVML_SUCCESS) {
        PLOGE << "Failed to get PCIe link generation: " << nvmlErrorString(status);
        return 0.0F;
    }
    if (const nvmlReturn_t status = nvmlDeviceGetMaxPcieLinkWidth(device, &lanes); status != NVML_SUCCESS) {
        PLOGE << "Failed to get PCIe link width: " << nvmlErrorString(status);
        return 0.0F;
    }
    const auto laneRate = PcieLaneRate(generation);
    if (!laneRate) {
        PLOGE << "Unsupported PCIe generation: " << generation;
        return 0.0F;
    }
    return static_cast<float>(lanes * *laneRate);
}

float NvmlClient::GetMemoryBandwidth(nvmlDevice_t device) const
{
    unsigned int megahertz = 0;
    unsigned int bits = 0;
    if (const nvmlReturn_t status = nvmlDeviceGetClockInfo(device, NVML_CLOCK_MEM, &megahertz); status != NVML_SUCCESS) {
        PLOGE << "Failed to get memory clock speed: " << nvmlErrorString(status);
        return 0.0F;
    }
    if (const nvmlReturn_t status = nvmlDeviceGetMemoryBusWidth(device, &bits); status != NVML_SUCCESS) {
        PLOGE << "Failed to get memory bus width: " << nvmlErrorString(status);
        return 0.0F;
    }
    return NvidiaMemoryBandwidth(megahertz, bits);
}

} // namespace orvel::shared::enumeration
