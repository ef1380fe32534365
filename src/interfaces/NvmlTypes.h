#pragma once

#include <cstdint>

// NVIDIA's Management Library, as far as it is used here. It does not know namespaces: these are its published names.

using nvmlDevice_t = struct nvmlDevice_st*;
using nvmlReturn_t = int;

constexpr nvmlReturn_t NVML_SUCCESS = 0;
constexpr nvmlReturn_t NVML_ERROR_NOT_SUPPORTED = 3;
constexpr nvmlReturn_t NVML_ERROR_UNKNOWN = 999;

constexpr int NVML_TEMPERATURE_THRESHOLD_SHUTDOWN = 0;
constexpr int NVML_TEMPERATURE_THRESHOLD_SLOWDOWN = 1;
constexpr int NVML_TEMPERATURE_THRESHOLD_GPU_MAX = 3;
constexpr int NVML_CLOCK_GRAPHICS = 0;
constexpr int NVML_CLOCK_MEM = 2;
constexpr int NVML_MEMORY_ERROR_TYPE_CORRECTED = 0;
constexpr int NVML_MEMORY_ERROR_TYPE_UNCORRECTED = 1;
constexpr int NVML_AGGREGATE_ECC = 1; ///< since the card was made, not since it was started
constexpr unsigned int NVML_DEVICE_SERIAL_BUFFER_SIZE = 30;
constexpr unsigned int NVML_DEVICE_UUID_V2_BUFFER_SIZE = 96;
constexpr unsigned int NVML_DEVICE_VBIOS_VERSION_BUFFER_SIZE = 32;
constexpr unsigned int NVML_SYSTEM_DRIVER_VERSION_BUFFER_SIZE = 80;

/// There is no function: NVML's devices are the first of their card.
struct nvmlPciInfo_t {
    char busIdLegacy[16];
    uint32_t domain;
    uint32_t bus;
    uint32_t device;
    uint32_t pciDeviceId; ///< device in the upper, vendor in the lower 16 bits
    uint32_t pciSubSystemId;
    char busId[32];
};
static_assert(sizeof(nvmlPciInfo_t) == 68);

struct nvmlMemory_t {
    uint64_t total; ///< bytes
    uint64_t free;
    uint64_t used;
};
static_assert(sizeof(nvmlMemory_t) == 24);
