#include "FieldSources.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "vendors/Vendors.h"

namespace orvel::tools {

using shared::enumeration::Vendor;
using shared::enumeration::vendors;

namespace {

// Made from properties/properties.toml by ./dev generate.
// clang-format off
constexpr std::array<std::string_view, 3> manufacturers = {"Intel", "Nvidia", "AMD"};
// clang-format on

static_assert(std::equal(manufacturers.begin(), manufacturers.end(), std::begin(vendors), std::end(vendors),
                         [](std::string_view name, const Vendor& vendor) { return vendor.Manufacturer == name; }),
              "properties/properties.toml and src/vendors/Vendors.h have the same vendors in the same order");

struct Row {
    std::string_view Field;
    std::array<FieldSource, manufacturers.size()> Sources; ///< in the order of the manufacturers
};

constexpr Row rows[] = {
    // Made from properties/properties.toml by ./dev generate.
    // clang-format off
    {"AvailabilityCode", {{
        {"WMI Win32_VideoController.Availability", "BaseGraphicCard::GetAvailabilityCode", ""},
        {"WMI Win32_VideoController.Availability", "BaseGraphicCard::GetAvailabilityCode", ""},
        {"WMI Win32_VideoController.Availability", "BaseGraphicCard::GetAvailabilityCode", ""},
    }}},
    {"AvailabilityStatus", {{
        {"name of AvailabilityCode", "", ""},
        {"name of AvailabilityCode", "", ""},
        {"name of AvailabilityCode", "", ""},
    }}},
    {"ConfigError", {{
        {"WMI Win32_VideoController.ConfigManagerErrorCode", "BaseGraphicCard::GetConfigError", ""},
        {"WMI Win32_VideoController.ConfigManagerErrorCode", "BaseGraphicCard::GetConfigError", ""},
        {"WMI Win32_VideoController.ConfigManagerErrorCode", "BaseGraphicCard::GetConfigError", ""},
    }}},
    {"ConfigErrorStatus", {{
        {"name of ConfigError", "", ""},
        {"name of ConfigError", "", ""},
        {"name of ConfigError", "", ""},
    }}},
    {"UserConfig", {{
        {"WMI Win32_VideoController.ConfigManagerUserConfig", "BaseGraphicCard::GetUserConfig", ""},
        {"WMI Win32_VideoController.ConfigManagerUserConfig", "BaseGraphicCard::GetUserConfig", ""},
        {"WMI Win32_VideoController.ConfigManagerUserConfig", "BaseGraphicCard::GetUserConfig", ""},
    }}},
    {"CurrentResolution", {{
        {"WMI Win32_VideoController.CurrentHorizontalResolution and CurrentVerticalResolution", "BaseGraphicCard::GetCurrentResolution", ""},
        {"WMI Win32_VideoController.CurrentHorizontalResolution and CurrentVerticalResolution", "BaseGraphicCard::GetCurrentResolution", ""},
        {"WMI Win32_VideoController.CurrentHorizontalResolution and CurrentVerticalResolution", "BaseGraphicCard::GetCurrentResolution", ""},
    }}},
    {"CurrentRefreshRate", {{
        {"WMI Win32_VideoController.CurrentRefreshRate", "BaseGraphicCard::GetCurrentRefreshRate", "Hz"},
        {"WMI Win32_VideoController.CurrentRefreshRate", "BaseGraphicCard::GetCurrentRefreshRate", "Hz"},
        {"WMI Win32_VideoController.CurrentRefreshRate", "BaseGraphicCard::GetCurrentRefreshRate", "Hz"},
    }}},
    {"DriverVersion", {{
        {"WMI Win32_VideoController.DriverVersion", "BaseGraphicCard::GetDriverVersion", ""},
        {"WMI Win32_VideoController.DriverVersion", "BaseGraphicCard::GetDriverVersion", ""},
        {"WMI Win32_VideoController.DriverVersion", "BaseGraphicCard::GetDriverVersion", ""},
    }}},
    {"IsAeroEnabled", {{
        {"DwmIsCompositionEnabled", "", ""},
        {"DwmIsCompositionEnabled", "", ""},
        {"DwmIsCompositionEnabled", "", ""},
    }}},
    {"GraphicsCardSn", {{
        {"WMI Win32_Bios.SerialNumber (of the machine)", "", ""},
        {"NVML nvmlDeviceGetSerial", "NvmlClient::GetGraphicCardSerialNumber", ""},
        {"WMI Win32_Bios.SerialNumber (of the machine)", "", ""},
    }}},
    {"BusId", {{
        {"registry Enum\\PCI: LocationInformation", "GetBusIdFromRegistry", ""},
        {"NVAPI NvAPI_GPU_GetBusId", "NvapiClient::GetBusId", ""},
        {"registry Enum\\PCI: LocationInformation", "GetBusIdFromRegistry", ""},
    }}},
    {"DeviceId", {{
        {"WMI Win32_VideoController.PNPDeviceID", "Intel::QueryInfo", ""},
        {"NVAPI NvAPI_GPU_GetPCIIdentifiers", "NvapiClient::GetDeviceId", ""},
        {"ADLX IADLXGPU::DeviceId", "", ""},
    }}},
    {"SubsystemId", {{
        {"WMI Win32_VideoController.PNPDeviceID", "Intel::QueryInfo", ""},
        {"NVAPI NvAPI_GPU_GetPCIIdentifiers", "NvapiClient::GetSubsystemId", ""},
        {"ADLX IADLXGPU::PNPString", "", ""},
    }}},
    {"CardName", {{
        {"WMI Win32_VideoController.Name", "Intel::QueryInfo", ""},
        {"NVAPI NvAPI_GPU_GetFullName", "NvapiClient::GetCardName", ""},
        {"ADLX IADLXGPU::Name", "", ""},
    }}},
    {"ChipName", {{
        {"derived from CardName", "", ""},
        {"NVAPI NvAPI_GPU_GetFullName", "NvapiClient::GetChipName", ""},
        {"OpenCL CL_DEVICE_NAME of the device of the same name", "OpenCLWrapper::", ""},
    }}},
    {"Manufacturer", {{
        {"constant", "", ""},
        {"constant", "", ""},
        {"constant", "", ""},
    }}},
    {"BusInterface", {{
        {"not available from this vendor", "", ""},
        {"NVAPI NvAPI_GPU_GetBusType", "NvapiClient::GetBusInterface", ""},
        {"not available from this vendor", "", ""},
    }}},
    {"PcieGeneration", {{
        {"not available from this vendor", "", ""},
        {"NVML nvmlDeviceGetCurrPcieLinkGeneration", "NvmlClient::GetPcieGeneration", ""},
        {"not available from this vendor", "", ""},
    }}},
    {"PciTransferRate", {{
        {"not available from this vendor", "", "MB/s"},
        {"NVML nvmlDeviceGetMaxPcieLinkGeneration and nvmlDeviceGetMaxPcieLinkWidth", "NvmlClient::GetPcieTransferRate", "MB/s"},
        {"not available from this vendor", "", "MB/s"},
    }}},
    {"PciLanes", {{
        {"not available from this vendor", "", ""},
        {"NVAPI NvAPI_GPU_GetCurrentPCIEDownstreamWidth", "NvapiClient::GetPciLanes", ""},
        {"ADL ADL_Overdrive5_CurrentActivity_Get", "", ""},
    }}},
    {"PixelFillRate", {{
        {"formula: OpenCL clock x (memory width / CL_DEVICE_MAX_CONSTANT_ARGS)", "", "Gpixel/s"},
        {"not available from this vendor", "", "Gpixel/s"},
        {"not available from this vendor", "", "Gpixel/s"},
    }}},
    {"TextureFillRate", {{
        {"formula: OpenCL clock x (memory width / CL_DEVICE_MAX_CONSTANT_ARGS) x transfer factor of the memory", "", "Gtexel/s"},
        {"not available from this vendor", "", "Gtexel/s"},
        {"not available from this vendor", "", "Gtexel/s"},
    }}},
    {"CudaCapability", {{
        {"not available from this vendor", "", ""},
        {"NVML nvmlDeviceGetCudaComputeCapability", "NvmlClient::GetCudaCapability", ""},
        {"not available from this vendor", "", ""},
    }}},
    {"MaxTemperature", {{
        {"not available from this vendor", "", "°C"},
        {"NVML nvmlDeviceGetTemperatureThreshold", "NvmlClient::GetMaxTemperature", "°C"},
        {"not available from this vendor", "", "°C"},
    }}},
    {"TemperateSlowdown", {{
        {"not available from this vendor", "", "°C"},
        {"NVML nvmlDeviceGetTemperatureThreshold", "NvmlClient::GetTemperatureSlowdown", "°C"},
        {"not available from this vendor", "", "°C"},
    }}},
    {"TemperatureShutdown", {{
        {"not available from this vendor", "", "°C"},
        {"NVML nvmlDeviceGetTemperatureThreshold", "NvmlClient::GetTemperatureShutdown", "°C"},
        {"not available from this vendor", "", "°C"},
    }}},
    {"GpuType", {{
        {"WMI Win32_VideoController.AdapterDACType", "", ""},
        {"NVAPI NvAPI_GPU_GetGPUType", "NvapiClient::GetGpuType", ""},
        {"not available from this vendor", "", ""},
    }}},
    {"MultiGpuSupport", {{
        {"not available from this vendor", "", ""},
        {"NVAPI NvAPI_D3D11_MultiGPU_GetCaps", "NvapiClient::GetMultiGpuSupport", ""},
        {"not available from this vendor", "", ""},
    }}},
    {"GpuClockMax", {{
        {"OpenCL CL_DEVICE_MAX_CLOCK_FREQUENCY", "", "MHz"},
        {"NVAPI NvAPI_GPU_GetAllClockFrequencies", "NvapiClient::GetGpuClockMax", "MHz"},
        {"not available from this vendor", "", "MHz"},
    }}},
    {"GpuBoostClock", {{
        {"not available from this vendor", "", "MHz"},
        {"NVAPI NvAPI_GPU_GetAllClockFrequencies", "NvapiClient::GetGpuBoostClock", "MHz"},
        {"not available from this vendor", "", "MHz"},
    }}},
    {"MemoryClockMax", {{
        {"WMI Win32_PhysicalMemory.Speed, halved (of the machine)", "", "MHz"},
        {"NVAPI NvAPI_GPU_GetAllClockFrequencies", "NvapiClient::GetMemoryClockMax", "MHz"},
        {"WMI Win32_PhysicalMemory.Speed, halved (of the machine)", "", "MHz"},
    }}},
    {"MemoryBoostClock", {{
        {"OpenCL CL_DEVICE_MAX_CLOCK_FREQUENCY (repeats the GPU's clock)", "", "MHz"},
        {"NVAPI NvAPI_GPU_GetAllClockFrequencies", "NvapiClient::GetMemoryBoostClock", "MHz"},
        {"not available from this vendor", "", "MHz"},
    }}},
    {"MemorySize", {{
        {"WMI Win32_VideoController.AdapterRAM", "", "MiB"},
        {"NVAPI NvAPI_GPU_GetMemoryInfoEx", "NvapiClient::GetMemorySize", "bytes (low 32 bits)"},
        {"ADLX IADLXGPU::TotalVRAM", "", "MiB"},
    }}},
    {"MemorySharedSize", {{
        {"DXGI DXGI_ADAPTER_DESC.SharedSystemMemory", "", "GiB"},
        {"NVAPI NvAPI_GPU_GetMemoryInfoEx", "NvapiClient::GetMemorySharedSize", "bytes (low 32 bits)"},
        {"DXGI DXGI_ADAPTER_DESC.SharedSystemMemory", "", "GiB"},
    }}},
    {"MemoryType", {{
        {"WMI Win32_PhysicalMemory.SMBIOSMemoryType (of the machine)", "", ""},
        {"WMI Win32_PhysicalMemory.SMBIOSMemoryType (of the machine)", "", ""},
        {"WMI Win32_PhysicalMemory.SMBIOSMemoryType (of the machine)", "", ""},
    }}},
    {"MemoryBandwidth", {{
        {"formula: WMI Win32_PhysicalMemory Speed and TotalWidth (of the machine)", "", ""},
        {"NVML nvmlDeviceGetClockInfo and nvmlDeviceGetMemoryBusWidth", "NvmlClient::GetMemoryBandwidth", "GB/s"},
        {"formula: WMI Win32_PhysicalMemory Speed and TotalWidth (of the machine)", "GetMemoryBandwidth", ""},
    }}},
    {"MemoryBusWidth", {{
        {"WMI Win32_PhysicalMemory.TotalWidth (of the machine)", "", "bit"},
        {"NVAPI NvAPI_GPU_GetRamBusWidth", "NvapiClient::GetMemoryBusWidth", "bit"},
        {"not available from this vendor", "", "bit"},
    }}},
    {"Cores", {{
        {"OpenCL CL_DEVICE_MAX_COMPUTE_UNITS", "", ""},
        {"NVAPI NvAPI_GPU_GetGpuCoreCount", "NvapiClient::GetCores", ""},
        {"ADL ADL2_Adapter_Graphic_Core_Info_Get", "", ""},
    }}},
    {"Shaders", {{
        {"OpenCL CL_DEVICE_MAX_COMPUTE_UNITS", "", ""},
        {"NVAPI NvAPI_GPU_GetGpuCoreCount", "NvapiClient::GetShaders", ""},
        {"ADL ADL2_Adapter_Graphic_Core_Info_Get", "", ""},
    }}},
    {"DriverReleaseDate", {{
        {"WMI Win32_VideoController.DriverDate", "Intel::QueryInfo", ""},
        {"WMI Win32_VideoController.DriverDate", "BaseGraphicCard::GetDriverReleaseDate", ""},
        {"WMI Win32_VideoController.DriverDate", "AMD::QueryInfo", ""},
    }}},
    {"BiosVersion", {{
        {"registry Control\\Video: HardwareInformation.BiosString", "", ""},
        {"NVAPI NvAPI_GPU_GetVbiosVersionString", "NvapiClient::GetBiosVersion", ""},
        {"registry Control\\Video: HardwareInformation.BiosString", "", ""},
    }}},
    {"NvidiaSli", {{
        {"not available from this vendor", "", ""},
        {"NVAPI NvAPI_D3D11_MultiGPU_GetCaps", "NvapiClient::GetNvidiaSli", ""},
        {"not available from this vendor", "", ""},
    }}},
    {"AmdCrossfire", {{
        {"not available from this vendor", "", ""},
        {"not available from this vendor", "", ""},
        {"ADL ADL2_Adapter_Crossfire_Get", "", ""},
    }}},
    {"EccStatus", {{
        {"not available from this vendor", "", ""},
        {"NVAPI NvAPI_GPU_GetECCStatusInfo", "NvapiClient::GetEccStatus", ""},
        {"ADL ADL2_Workstation_ECC_Caps and ADL2_Workstation_ECC_Get", "", ""},
    }}},
    {"EccSingleBitErrors", {{
        {"not available from this vendor", "", ""},
        {"NVAPI NvAPI_GPU_GetECCErrorInfo", "NvapiClient::GetEccSingleBitErrors", ""},
        {"ADL ADL2_Workstation_ECCData_Get", "", ""},
    }}},
    {"EccDoubleBitErrors", {{
        {"not available from this vendor", "", ""},
        {"NVAPI NvAPI_GPU_GetECCErrorInfo", "NvapiClient::GetEccDoubleBitErrors", ""},
        {"ADL ADL2_Workstation_ECCData_Get", "", ""},
    }}},
    {"AdapterName", {{
        {"WMI Win32_VideoController.Name", "BaseGraphicCard::GetAdapterName", ""},
        {"WMI Win32_VideoController.Name", "BaseGraphicCard::GetAdapterName", ""},
        {"WMI Win32_VideoController.Name", "BaseGraphicCard::GetAdapterName", ""},
    }}},
    {"AdapterRam", {{
        {"WMI Win32_VideoController.AdapterRAM", "BaseGraphicCard::GetAdapterRam", "MiB"},
        {"WMI Win32_VideoController.AdapterRAM", "BaseGraphicCard::GetAdapterRam", "MiB"},
        {"WMI Win32_VideoController.AdapterRAM", "BaseGraphicCard::GetAdapterRam", "MiB"},
    }}},
    {"AdapterStatus", {{
        {"WMI Win32_VideoController.Status", "BaseGraphicCard::GetAdapterStatus", ""},
        {"WMI Win32_VideoController.Status", "BaseGraphicCard::GetAdapterStatus", ""},
        {"WMI Win32_VideoController.Status", "BaseGraphicCard::GetAdapterStatus", ""},
    }}},
    // clang-format on
};

} // namespace

FieldSource SourceOf(const std::string& field, const std::string& manufacturer)
{
    const auto maker = std::find(manufacturers.begin(), manufacturers.end(), manufacturer);
    const auto row = std::find_if(std::begin(rows), std::end(rows), [&field](const Row& it) { return it.Field == field; });
    if (maker == manufacturers.end() || row == std::end(rows)) {
        return {"", "", ""};
    }
    return row->Sources[static_cast<size_t>(maker - manufacturers.begin())];
}

bool HasNoSource(const FieldSource& source)
{
    return std::string_view(source.Source) == "not available from this vendor";
}

} // namespace orvel::tools
