#include "vendors/nvidia/NvapiInterface.h"

namespace orvel::shared::enumeration {

template <typename... Arguments>
NvAPI_Status NvapiInterface::Call(NvapiId id, Arguments... arguments) const
{
    using Function = NvAPI_Status (*)(Arguments...);
    const auto function = queryInterface ? reinterpret_cast<Function>(queryInterface(static_cast<uint32_t>(id))) : nullptr;
    return function ? function(arguments...) : NVAPI_NO_IMPLEMENTATION;
}

NvAPI_Status NvapiInterface::NvAPI_Initialize()
{
    module.reset(::LoadLibraryW(L"nvapi64.dll"));
    if (!module) {
        return NVAPI_LIBRARY_NOT_FOUND;
    }
    queryInterface = FindFunction<QueryInterface>(module.get(), "nvapi_QueryInterface");
    const NvAPI_Status status = queryInterface ? Call(NvapiId::NvAPI_Initialize) : NVAPI_ERROR;
    if (status != NVAPI_OK) {
        queryInterface = nullptr;
        module.reset();
    }
    return status;
}

NvAPI_Status NvapiInterface::NvAPI_Unload()
{
    const NvAPI_Status status = Call(NvapiId::NvAPI_Unload);
    queryInterface = nullptr;
    if (status != NVAPI_OK) {
        (void)module.release(); // a driver that is not shut down may still run, so its code must stay loaded
    }
    module.reset();
    return status;
}

NvAPI_Status NvapiInterface::NvAPI_EnumPhysicalGPUs(NvPhysicalGpuHandle* gpus, uint32_t* count) const
{
    return Call(NvapiId::NvAPI_EnumPhysicalGPUs, gpus, count);
}

NvAPI_Status NvapiInterface::NvAPI_GPU_GetFullName(NvPhysicalGpuHandle gpu, char* name) const
{
    return Call(NvapiId::NvAPI_GPU_GetFullName, gpu, name);
}

NvAPI_Status NvapiInterface::NvAPI_GPU_GetBusId(NvPhysicalGpuHandle gpu, uint32_t* bus) const
{
    return Call(NvapiId::NvAPI_GPU_GetBusId, gpu, bus);
}

NvAPI_Status NvapiInterface::NvAPI_GPU_GetBusType(NvPhysicalGpuHandle gpu, int32_t* type) const
{
    return Call(NvapiId::NvAPI_GPU_GetBusType, gpu, type);
}

NvAPI_Status NvapiInterface::NvAPI_GPU_GetPCIIdentifiers(NvPhysicalGpuHandle gpu, uint32_t* device, uint32_t* subsystem,
                                                         uint32_t* revision, uint32_t* extendedDevice) const
{
    return Call(NvapiId::NvAPI_GPU_GetPCIIdentifiers, gpu, device, subsystem, revision, extendedDevice);
}

NvAPI_Status NvapiInterface::NvAPI_GPU_GetGPUType(NvPhysicalGpuHandle gpu, int32_t* type) const
{
    return Call(NvapiId::NvAPI_GPU_GetGPUType, gpu, type);
}

NvAPI_Status NvapiInterface::NvAPI_GPU_GetVbiosVersionString(NvPhysicalGpuHandle gpu, char* version) const
{
    return Call(NvapiId::NvAPI_GPU_GetVbiosVersionString, gpu, version);
}

NvAPI_Status NvapiInterface::NvAPI_GPU_GetGpuCoreCount(NvPhysicalGpuHandle gpu, uint32_t* count) const
{
    return Call(NvapiId::NvAPI_GPU_GetGpuCoreCount, gpu, count);
}

NvAPI_Status NvapiInterface::NvAPI_GPU_GetRamBusWidth(NvPhysicalGpuHandle gpu, uint32_t* bits) const
{
    return Call(NvapiId::NvAPI_GPU_GetRamBusWidth, gpu, bits);
}

NvAPI_Status NvapiInterface::NvAPI_GPU_GetCurrentPCIEDownstreamWidth(NvPhysicalGpuHandle gpu, uint32_t* lanes) const
{
    return Call(NvapiId::NvAPI_GPU_GetCurrentPCIEDownstreamWidth, gpu, lanes);
}

NvAPI_Status NvapiInterface::NvAPI_GPU_GetMemoryInfoEx(NvPhysicalGpuHandle gpu, NvapiMemoryInfo* info) const
{
    return Call(NvapiId::NvAPI_GPU_GetMemoryInfoEx, gpu, info);
}

NvAPI_Status NvapiInterface::NvAPI_GPU_GetAllClockFrequencies(NvPhysicalGpuHandle gpu, NvapiClockFrequencies* clocks) const
{
    return Call(NvapiId::NvAPI_GPU_GetAllClockFrequencies, gpu, clocks);
}

NvAPI_Status NvapiInterface::NvAPI_GPU_GetECCStatusInfo(NvPhysicalGpuHandle gpu, NvapiEccStatusInfo* info) const
{
    return Call(NvapiId::NvAPI_GPU_GetECCStatusInfo, gpu, info);
}

NvAPI_Status NvapiInterface::NvAPI_GPU_GetECCErrorInfo(NvPhysicalGpuHandle gpu, NvapiEccErrorInfo* info) const
{
    return Call(NvapiId::NvAPI_GPU_GetECCErrorInfo, gpu, info);
}

NvAPI_Status NvapiInterface::NvAPI_D3D11_MultiGPU_GetCaps(NvapiMultiGpuCaps* caps) const
{
    return Call(NvapiId::NvAPI_D3D11_MultiGPU_GetCaps, caps);
}

} // namespace orvel::shared::enumeration
