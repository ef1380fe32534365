#pragma once

// NVIDIA's Management Library, as far as it is used here. It does not know namespaces: these are its published names.

using nvmlDevice_t = struct nvmlDevice_st*;
using nvmlReturn_t = int;

constexpr nvmlReturn_t NVML_SUCCESS = 0;
constexpr nvmlReturn_t NVML_ERROR_UNKNOWN = 999;

constexpr int NVML_TEMPERATURE_THRESHOLD_SHUTDOWN = 0;
constexpr int NVML_TEMPERATURE_THRESHOLD_SLOWDOWN = 1;
constexpr int NVML_TEMPERATURE_THRESHOLD_GPU_MAX = 3;
constexpr int NVML_CLOCK_MEM = 2;
constexpr unsigned int NVML_DEVICE_SERIAL_BUFFER_SIZE = 30;
