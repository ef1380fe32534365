#pragma once

#include <cstdint>

namespace orvel::simulation {

constexpr int32_t NVAPI_OK = 0;
constexpr int32_t NVAPI_API_NOT_INITIALIZED = -4;
constexpr int32_t NVAPI_INVALID_ARGUMENT = -5;
constexpr int32_t NVAPI_NVIDIA_DEVICE_NOT_FOUND = -6;
constexpr int32_t NVAPI_INCOMPATIBLE_STRUCT_VERSION = -9;
constexpr int32_t NVAPI_EXPECTED_PHYSICAL_GPU_HANDLE = -101;
constexpr int32_t NVAPI_NOT_SUPPORTED = -104;

/// Forgets what calls on the machine before left behind.
void ResetNvapi();

} // namespace orvel::simulation
