#pragma once

#include <string>

#include "drivers/HandleTable.h"
#include "machine/NvapiModel.h"

namespace orvel::simulation {

constexpr int32_t NVAPI_OK = 0;
constexpr int32_t NVAPI_API_NOT_INITIALIZED = -4;
constexpr int32_t NVAPI_INVALID_ARGUMENT = -5;
constexpr int32_t NVAPI_NVIDIA_DEVICE_NOT_FOUND = -6;
constexpr int32_t NVAPI_INVALID_HANDLE = -8;
constexpr int32_t NVAPI_INCOMPATIBLE_STRUCT_VERSION = -9;
constexpr int32_t NVAPI_EXPECTED_LOGICAL_GPU_HANDLE = -100;
constexpr int32_t NVAPI_EXPECTED_PHYSICAL_GPU_HANDLE = -101;
constexpr int32_t NVAPI_NOT_SUPPORTED = -104;

/// Adds the violation, and returns NVAPI's status for it.
int32_t RefuseNull(const std::string& call);
int32_t RefuseVersion(const std::string& call);

/// Whether NVAPI is initialised. A call that needs a session and has none is a violation.
bool IsInNvapiSession(const std::string& call);

/// Begins a session. Sessions nest, and are counted.
void BeginNvapiSession();

/// Ends a session of BeginNvapiSession. The last end invalidates all handles.
void EndNvapiSession();

/// The GPUs' handles in the session.
HandleTable<NvapiGpuModel>& NvapiHandles();

/// The handles of the logical GPUs, by their physical GPU.
HandleTable<NvapiGpuModel>& NvapiLogicalHandles();

} // namespace orvel::simulation
