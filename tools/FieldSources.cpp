#include "FieldSources.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace orvel::tools {

namespace {

// Made from properties/properties.toml by ./dev generate.
// clang-format off
constexpr std::array<std::string_view, 3> manufacturers = {"Intel", "Nvidia", "AMD"};
// clang-format on

struct Row {
    std::string_view Field;
    std::array<FieldSource, manufacturers.size()> Sources; ///< in the order of the manufacturers
};

constexpr Row rows[] = {
    // Made from properties/properties.toml by ./dev generate.
    // clang-format off
    {"AvailabilityCode", {{
        {"WMI Win32_VideoController.Availability", "BaseGraphicCard::GetAvailabilityCode"},
        {"WMI Win32_VideoController.Availability", "BaseGraphicCard::GetAvailabilityCode"},
        {"WMI Win32_VideoController.Availability", "BaseGraphicCard::GetAvailabilityCode"},
    }}},
    {"AvailabilityStatus", {{
        {"name of AvailabilityCode", ""},
        {"name of AvailabilityCode", ""},
        {"name of AvailabilityCode", ""},
    }}},
    {"ConfigError", {{
        {"WMI Win32_VideoController.ConfigManagerErrorCode", "BaseGraphicCard::GetConfigError"},
        {"WMI Win32_VideoController.ConfigManagerErrorCode", "BaseGraphicCard::GetConfigError"},
        {"WMI Win32_VideoController.ConfigManagerErrorCode", "BaseGraphicCard::GetConfigError"},
    }}},
    {"ConfigErrorStatus", {{
        {"name of ConfigError", ""},
        {"name of ConfigError", ""},
        {"name of ConfigError", ""},
    }}},
    {"UserConfig", {{
        {"WMI Win32_VideoController.ConfigManagerUserConfig", "BaseGraphicCard::GetUserConfig"},
        {"WMI Win32_VideoController.ConfigManagerUserConfig", "BaseGraphicCard::GetUserConfig"},
        {"WMI Win32_VideoController.ConfigManagerUserConfig", "BaseGraphicCard::GetUserConfig"},
    }}},
    {"CurrentResolution", {{
        {"WMI Win32_VideoController.CurrentHorizontalResolution and CurrentVerticalResolution", "BaseGraphicCard::GetCurrentResolution"},
        {"WMI Win32_VideoController.CurrentHorizontalResolution and CurrentVerticalResolution", "BaseGraphicCard::GetCurrentResolution"},
        {"WMI Win32_VideoController.CurrentHorizontalResolution and CurrentVerticalResolution", "BaseGraphicCard::GetCurrentResolution"},
    }}},
    {"CurrentRefreshRate", {{
        {"WMI Win32_VideoController.CurrentRefreshRate", "BaseGraphicCard::GetCurrentRefreshRate"},
        {"WMI Win32_VideoController.CurrentRefreshRate", "BaseGraphicCard::GetCurrentRefreshRate"},
        {"WMI Win32_VideoController.CurrentRefreshRate", "BaseGraphicCard::GetCurrentRefreshRate"},
    }}},
    {"DriverVersion", {{
        {"WMI Win32_VideoController.DriverVersion", "BaseGraphicCard::GetDriverVersion"},
        {"WMI Win32_VideoController.DriverVersion", "BaseGraphicCard::GetDriverVersion"},
        {"WMI Win32_VideoController.DriverVersion", "BaseGraphicCard::GetDriverVersion"},
    }}},
    {"IsAeroEnabled", {{
        {"DwmIsCompositionEnabled", ""},
        {"DwmIsCompositionEnabled", ""},
        {"DwmIsCompositionEnabled", ""},
    }}},
    {"GraphicsCardSn", {{
        {"WMI Win32_Bios.SerialNumber (the machine's)", ""},
        {"NVML nvmlDeviceGetSerial", "NvmlClient::GetGraphicCardSerialNumber"},
        {"WMI Win32_Bios.SerialNumber (the machine's)", ""},
    }}},
    {"BusId", {{
        {"registry Enum\\PCI: LocationInformation", "GetBusIdFromRegistry"},
        {"NVAPI NvAPI_GPU_GetBusId", "NvapiClient::GetBusId"},
        {"registry Enum\\PCI: LocationInformation", "GetBusIdFromRegistry"},
    }}},
    {"DeviceId", {{
        {"WMI Win32_VideoController.PNPDeviceID", "Intel::QueryInfo"},
        {"NVAPI NvAPI_GPU_GetPCIIdentifiers", "NvapiClient::GetDeviceId"},
        {"ADLX IADLXGPU::DeviceId", ""},
    }}},
    {"SubsystemId", {{
        {"WMI Win32_VideoController.PNPDeviceID", "Intel::QueryInfo"},
        {"NVAPI NvAPI_GPU_GetPCIIdentifiers", "NvapiClient::GetSubsystemId"},
        {"ADLX IADLXGPU::PNPString", ""},
    }}},
    {"CardName", {{
        {"WMI Win32_VideoController.Name", "Intel::QueryInfo"},
        {"NVAPI NvAPI_GPU_GetFullName", "NvapiClient::GetCardName"},
        {"ADLX IADLXGPU::Name", ""},
    }}},
    {"ChipName", {{
        {"made from CardName", ""},
        {"NVAPI NvAPI_GPU_GetFullName", "NvapiClient::GetChipName"},
        {"OpenCL CL_DEVICE_NAME of the device of the same name", "OpenCLWrapper::"},
    }}},
    {"Manufacturer", {{
        {"constant", ""},
        {"constant", ""},
        {"constant", ""},
    }}},
    {"BusInterface", {{
        {"not told by this vendor", ""},
        {"NVAPI NvAPI_GPU_GetBusType", "NvapiClient::GetBusInterface"},
        {"not told by this vendor", ""},
    }}},
    {"PcieGeneration", {{
        {"not told by this vendor", ""},
        {"NVML nvmlDeviceGetCurrPcieLinkGeneration", "NvmlClient::GetPcieGeneration"},
        {"not told by this vendor", ""},
    }}},
    {"PciTransferRate", {{
        {"not told by this vendor", ""},
        {"NVML nvmlDeviceGetMaxPcieLinkGeneration and nvmlDeviceGetMaxPcieLinkWidth", "NvmlClient::GetPcieTransferRate"},
        {"not told by this vendor", ""},
    }}},
    {"PciLanes", {{
        {"not told by this vendor", ""},
        {"NVAPI NvAPI_GPU_GetCurrentPCIEDownstreamWidth", "NvapiClient::GetPciLanes"},
        {"ADL ADL_Overdrive5_CurrentActivity_Get", ""},
    }}},
    {"PixelFillRate", {{
        {"formula: OpenCL clock x (memory width / CL_DEVICE_MAX_CONSTANT_ARGS)", ""},
        {"not told by this vendor", ""},
        {"not told by this vendor", ""},
    }}},
    {"TextureFillRate", {{
        {"formula: OpenCL clock x (memory width / CL_DEVICE_MAX_CONSTANT_ARGS) x transfer factor of the memory", ""},
        {"not told by this vendor", ""},
        {"not told by this vendor", ""},
    }}},
    {"CudaCapability", {{
        {"not told by this vendor", ""},
        {"NVML nvmlDeviceGetCudaComputeCapability", "NvmlClient::GetCudaCapability"},
        {"not told by this vendor", ""},
    }}},
    {"MaxTemperature", {{
        {"not told by this vendor", ""},
        {"NVML nvmlDeviceGetTemperatureThreshold", "NvmlClient::GetMaxTemperature"},
        {"not told by this vendor", ""},
    }}},
    {"TemperateSlowdown", {{
        {"not told by this vendor", ""},
        {"NVML nvmlDeviceGetTemperatureThreshold", "NvmlClient::GetTemperatureSlowdown"},
        {"not told by this vendor", ""},
    }}},
    {"TemperatureShutdown", {{
        {"not told by this vendor", ""},
        {"NVML nvmlDeviceGetTemperatureThreshold", "NvmlClient::GetTemperatureShutdown"},
        {"not told by this vendor", ""},
    }}},
    {"GpuType", {{
        {"WMI Win32_VideoController.AdapterDACType", ""},
        {"NVAPI NvAPI_GPU_GetGPUType", "NvapiClient::GetGpuType"},
        {"not told by this vendor", ""},
    }}},
    {"MultiGpuSupport", {{
        {"not told by this vendor", ""},
        {"NVAPI NvAPI_D3D11_MultiGPU_GetCaps", "NvapiClient::GetMultiGpuSupport"},
        {"not told by this vendor", ""},
    }}},
    {"GpuClockMax", {{
        {"OpenCL CL_DEVICE_MAX_CLOCK_FREQUENCY", ""},
        {"NVAPI NvAPI_GPU_GetAllClockFrequencies", "NvapiClient::GetGpuClockMax"},
        {"not told by this vendor", ""},
    }}},
    {"GpuBoostClock", {{
        {"not told by this vendor", ""},
        {"NVAPI NvAPI_GPU_GetAllClockFrequencies", "NvapiClient::GetGpuBoostClock"},
        {"not told by this vendor", ""},
    }}},
    {"MemoryClockMax", {{
        {"WMI Win32_PhysicalMemory.Speed, halved (the machine's)", ""},
        {"NVAPI NvAPI_GPU_GetAllClockFrequencies", "NvapiClient::GetMemoryClockMax"},
        {"WMI Win32_PhysicalMemory.Speed, halved (the machine's)", ""},
    }}},
    {"MemoryBoostClock", {{
        {"OpenCL CL_DEVICE_MAX_CLOCK_FREQUENCY (repeats the GPU's clock)", ""},
        {"NVAPI NvAPI_GPU_GetAllClockFrequencies", "NvapiClient::GetMemoryBoostClock"},
        {"not told by this vendor", ""},
    }}},
    {"MemorySize", {{
        {"WMI Win32_VideoController.AdapterRAM", ""},
        {"NVAPI NvAPI_GPU_GetMemoryInfoEx", "NvapiClient::GetMemorySize"},
        {"ADLX IADLXGPU::TotalVRAM", ""},
    }}},
    {"MemorySharedSize", {{
        {"DXGI DXGI_ADAPTER_DESC.SharedSystemMemory", ""},
        {"NVAPI NvAPI_GPU_GetMemoryInfoEx", "NvapiClient::GetMemorySharedSize"},
        {"DXGI DXGI_ADAPTER_DESC.SharedSystemMemory", ""},
    }}},
    {"MemoryType", {{
        {"WMI Win32_PhysicalMemory.SMBIOSMemoryType (the machine's)", ""},
        {"WMI Win32_PhysicalMemory.SMBIOSMemoryType (the machine's)", ""},
        {"WMI Win32_PhysicalMemory.SMBIOSMemoryType (the machine's)", ""},
    }}},
    {"MemoryBandwidth", {{
        {"formula: WMI Win32_PhysicalMemory Speed and TotalWidth (the machine's)", ""},
        {"NVML nvmlDeviceGetClockInfo and nvmlDeviceGetMemoryBusWidth", "NvmlClient::GetMemoryBandwidth"},
        {"formula: WMI Win32_PhysicalMemory Speed and TotalWidth (the machine's)", "GetMemoryBandwidth"},
    }}},
    {"MemoryBusWidth", {{
        {"WMI Win32_PhysicalMemory.TotalWidth (the machine's)", ""},
        {"NVAPI NvAPI_GPU_GetRamBusWidth", "NvapiClient::GetMemoryBusWidth"},
        {"not told by this vendor", ""},
    }}},
    {"Cores", {{
        {"OpenCL CL_DEVICE_MAX_COMPUTE_UNITS", ""},
        {"NVAPI NvAPI_GPU_GetGpuCoreCount", "NvapiClient::GetCores"},
        {"ADL ADL2_Adapter_Graphic_Core_Info_Get", ""},
    }}},
    {"Shaders", {{
        {"OpenCL CL_DEVICE_MAX_COMPUTE_UNITS", ""},
        {"NVAPI NvAPI_GPU_GetGpuCoreCount", "NvapiClient::GetShaders"},
        {"ADL ADL2_Adapter_Graphic_Core_Info_Get", ""},
    }}},
    {"DriverReleaseDate", {{
        {"WMI Win32_VideoController.DriverDate", "Intel::QueryInfo"},
        {"WMI Win32_VideoController.DriverDate", "BaseGraphicCard::GetDriverReleaseDate"},
        {"WMI Win32_VideoController.DriverDate", "AMD::QueryInfo"},
    }}},
    {"BiosVersion", {{
        {"registry Control\\Video: HardwareInformation.BiosString", ""},
        {"NVAPI NvAPI_GPU_GetVbiosVersionString", "NvapiClient::GetBiosVersion"},
        {"registry Control\\Video: HardwareInformation.BiosString", ""},
    }}},
    {"NvidiaSli", {{
        {"not told by this vendor", ""},
        {"NVAPI NvAPI_D3D11_MultiGPU_GetCaps", "NvapiClient::GetNvidiaSli"},
        {"not told by this vendor", ""},
    }}},
    {"AmdCrossfire", {{
        {"not told by this vendor", ""},
        {"not told by this vendor", ""},
        {"ADL ADL2_Adapter_Crossfire_Get", ""},
    }}},
    {"EccStatus", {{
        {"not told by this vendor", ""},
        {"NVAPI NvAPI_GPU_GetECCStatusInfo", "NvapiClient::GetEccStatus"},
        {"ADL ADL2_Workstation_ECC_Caps and ADL2_Workstation_ECC_Get", ""},
    }}},
    {"EccSingleBitErrors", {{
        {"not told by this vendor", ""},
        {"NVAPI NvAPI_GPU_GetECCErrorInfo", "NvapiClient::GetEccSingleBitErrors"},
        {"ADL ADL2_Workstation_ECCData_Get", ""},
    }}},
    {"EccDoubleBitErrors", {{
        {"not told by this vendor", ""},
        {"NVAPI NvAPI_GPU_GetECCErrorInfo", "NvapiClient::GetEccDoubleBitErrors"},
        {"ADL ADL2_Workstation_ECCData_Get", ""},
    }}},
    {"AdapterName", {{
        {"WMI Win32_VideoController.Name", "BaseGraphicCard::GetAdapterName"},
        {"WMI Win32_VideoController.Name", "BaseGraphicCard::GetAdapterName"},
        {"WMI Win32_VideoController.Name", "BaseGraphicCard::GetAdapterName"},
    }}},
    {"AdapterRam", {{
        {"WMI Win32_VideoController.AdapterRAM", "BaseGraphicCard::GetAdapterRam"},
        {"WMI Win32_VideoController.AdapterRAM", "BaseGraphicCard::GetAdapterRam"},
        {"WMI Win32_VideoController.AdapterRAM", "BaseGraphicCard::GetAdapterRam"},
    }}},
    {"AdapterStatus", {{
        {"WMI Win32_VideoController.Status", "BaseGraphicCard::GetAdapterStatus"},
        {"WMI Win32_VideoController.Status", "BaseGraphicCard::GetAdapterStatus"},
        {"WMI Win32_VideoController.Status", "BaseGraphicCard::GetAdapterStatus"},
    }}},
    // clang-format on
};

} // namespace

FieldSource SourceOf(const std::string& field, const std::string& manufacturer)
{
    const auto maker = std::find(manufacturers.begin(), manufacturers.end(), manufacturer);
    const auto row = std::find_if(std::begin(rows), std::end(rows), [&field](const Row& it) { return it.Field == field; });
    if (maker == manufacturers.end() || row == std::end(rows)) {
        return {"", ""};
    }
    return row->Sources[static_cast<size_t>(maker - manufacturers.begin())];
}

bool IsToldByNobody(const FieldSource& source)
{
    return std::string_view(source.Source) == "not told by this vendor";
}

} // namespace orvel::tools
