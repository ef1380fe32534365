#pragma once

#include "interfaces/NvapiTypes.h"
#include "platform/Handles.h"

namespace orvel::shared::enumeration {

/// NVAPI's functions in "nvapi64.dll", under their published names. Each call looks up its id; a function that the
/// installed driver lacks returns NVAPI_NO_IMPLEMENTATION.
class NvapiInterface {
public:
    /// Loads the driver's DLL and initialises it. NVAPI_LIBRARY_NOT_FOUND if there is no DLL, NVAPI_ERROR if it is not
    /// NVAPI's; after any failure the DLL is not loaded.
    NvAPI_Status NvAPI_Initialize();

    /// Shuts NVAPI down and unloads the DLL. If that fails, returns the driver's status; the DLL stays loaded.
    NvAPI_Status NvAPI_Unload();

    NvAPI_Status NvAPI_EnumPhysicalGPUs(NvPhysicalGpuHandle* gpus, uint32_t* count) const;
    NvAPI_Status NvAPI_GPU_GetFullName(NvPhysicalGpuHandle gpu, char* name) const;
    NvAPI_Status NvAPI_GPU_GetBusId(NvPhysicalGpuHandle gpu, uint32_t* bus) const;
    NvAPI_Status NvAPI_GPU_GetBusType(NvPhysicalGpuHandle gpu, int32_t* type) const;
    NvAPI_Status NvAPI_GPU_GetPCIIdentifiers(NvPhysicalGpuHandle gpu, uint32_t* device, uint32_t* subsystem,
                                             uint32_t* revision, uint32_t* extendedDevice) const;
    NvAPI_Status NvAPI_GPU_GetGPUType(NvPhysicalGpuHandle gpu, int32_t* type) const;
    NvAPI_Status NvAPI_GPU_GetVbiosVersionString(NvPhysicalGpuHandle gpu, char* version) const;
    NvAPI_Status NvAPI_GPU_GetGpuCoreCount(NvPhysicalGpuHandle gpu, uint32_t* count) const;
    NvAPI_Status NvAPI_GPU_GetRamBusWidth(NvPhysicalGpuHandle gpu, uint32_t* bits) const;
    NvAPI_Status NvAPI_GPU_GetCurrentPCIEDownstreamWidth(NvPhysicalGpuHandle gpu, uint32_t* lanes) const;
    NvAPI_Status NvAPI_GPU_GetMemoryInfoEx(NvPhysicalGpuHandle gpu, NvapiMemoryInfo* info) const;
    NvAPI_Status NvAPI_GPU_GetAllClockFrequencies(NvPhysicalGpuHandle gpu, NvapiClockFrequencies* clocks) const;
    NvAPI_Status NvAPI_GPU_GetECCStatusInfo(NvPhysicalGpuHandle gpu, NvapiEccStatusInfo* info) const;
    NvAPI_Status NvAPI_GPU_GetECCErrorInfo(NvPhysicalGpuHandle gpu, NvapiEccErrorInfo* info) const;
    NvAPI_Status NvAPI_D3D11_MultiGPU_GetCaps(NvapiMultiGpuCaps* caps) const;

private:
    template <typename... Arguments>
    NvAPI_Status Call(NvapiId id, Arguments... arguments) const;

    using QueryInterface = void* (*)(uint32_t id);

    ModuleHandle module;
    QueryInterface queryInterface = nullptr;
};

} // namespace orvel::shared::enumeration
