// The order of the platform calls and log lines of NVIDIA's enumerator.

#include <algorithm>

#include <doctest/doctest.h>

#include "NvidiaRun.h"

using namespace orvel::tests;

namespace {

/// NVIDIA's part of a run: NVAPI's session.
std::vector<std::string> NvidiaCalls(const std::vector<std::string>& trace)
{
    const auto begin = std::find(trace.begin(), trace.end(), "nvapi NvAPI_Initialize");
    const auto unload = std::find(begin, trace.end(), "nvapi NvAPI_Unload");
    REQUIRE(unload != trace.end());
    return {begin, unload + 1};
}

std::string Nvapi(const std::string& getter, const std::string& text)
{
    return Line("error", "NvapiClient::" + getter, text + " Status code: -104");
}

std::string Nvml(const std::string& getter, const std::string& text)
{
    return Line("error", "NvmlClient::" + getter, text + ": Uninitialized");
}

std::string Wmi(const std::string& getter, const std::string& text)
{
    return Line("warning", "BaseGraphicCard::" + getter, text);
}

/// A machine whose drivers and WMI report only that the card is present and running.
Json SilentMachine()
{
    Json machine = Machine("nvidia-desktop");
    machine["nvapi"] = {{"gpus", Json::array({Json::object()})}};
    machine["nvml"] = {{"nvmlDeviceGetCount_v2", {{"status", 999}}}};
    const Json id = VideoController(machine)["PNPDeviceID"];
    VideoController(machine) = {{"Availability", 3}, {"PNPDeviceID", id}};
    machine["wmi"]["classes"]["Win32_PhysicalMemory"] = Json::array();
    return machine;
}

} // namespace

TEST_CASE("NVIDIA's run calls the platform in a fixed order")
{
    const std::vector<std::string> expected = {
        "nvapi NvAPI_Initialize",
        "nvapi NvAPI_EnumPhysicalGPUs",
        "nvml nvmlInit_v2",
        "nvml nvmlDeviceGetCount_v2",
        "nvml nvmlDeviceGetHandleByIndex_v2 0",
        "nvapi NvAPI_GPU_GetPCIIdentifiers",
        "wmi query SELECT * FROM Win32_VideoController WHERE PNPDeviceID LIKE 'PCI%VEN_10DE&DEV_2504%'",
        "wmi next",
        "wmi get Availability",
        "wmi get ConfigManagerErrorCode",
        "nvapi NvAPI_GPU_GetFullName",
        "nvapi NvAPI_GPU_GetBusId",
        "wmi get Status",
        "wmi get AdapterRAM",
        "wmi get Name",
        "nvapi NvAPI_GPU_GetECCErrorInfo", // double-bit errors
        "nvapi NvAPI_GPU_GetECCErrorInfo", // single-bit errors
        "nvapi NvAPI_GPU_GetECCStatusInfo",
        "nvapi 0xD2D25687", // SLI
        "nvapi NvAPI_GPU_GetVbiosVersionString",
        "wmi get DriverDate",
        "nvapi NvAPI_GPU_GetGpuCoreCount", // shaders
        "nvapi NvAPI_GPU_GetGpuCoreCount", // cores
        "nvapi NvAPI_GPU_GetRamBusWidth",
        "nvml nvmlDeviceGetClockInfo 2",
        "nvml nvmlDeviceGetMemoryBusWidth",
        "wmi query SELECT SMBIOSMemoryType FROM Win32_PhysicalMemory",
        "wmi next",
        "wmi get SMBIOSMemoryType",
        "nvapi NvAPI_GPU_GetMemoryInfoEx", // shared
        "nvapi NvAPI_GPU_GetMemoryInfoEx", // dedicated
        "nvapi NvAPI_GPU_GetAllClockFrequencies type=4",
        "nvapi NvAPI_GPU_GetAllClockFrequencies type=4",
        "nvapi NvAPI_GPU_GetAllClockFrequencies type=0",
        "nvapi NvAPI_GPU_GetAllClockFrequencies type=0",
        "nvapi 0xD2D25687", // multi-GPU support
        "nvapi NvAPI_GPU_GetGPUType",
        "nvml nvmlDeviceGetTemperatureThreshold 0",
        "nvml nvmlDeviceGetTemperatureThreshold 1",
        "nvml nvmlDeviceGetTemperatureThreshold 3",
        "nvml nvmlDeviceGetCudaComputeCapability",
        "nvapi NvAPI_GPU_GetCurrentPCIEDownstreamWidth",
        "nvml nvmlDeviceGetMaxPcieLinkGeneration",
        "nvml nvmlDeviceGetMaxPcieLinkWidth",
        "nvml nvmlDeviceGetCurrPcieLinkGeneration",
        "nvapi NvAPI_GPU_GetBusType",
        "nvapi NvAPI_GPU_GetFullName",
        "nvapi NvAPI_GPU_GetPCIIdentifiers",
        "nvml nvmlDeviceGetSerial",
        "nvml nvmlErrorString 3", // a desktop card has no serial number
        "dwm DwmIsCompositionEnabled",
        "wmi get DriverVersion",
        "wmi get CurrentRefreshRate",
        "wmi get CurrentHorizontalResolution",
        "wmi get CurrentVerticalResolution",
        "wmi get ConfigManagerUserConfig",
        "nvml nvmlShutdown",
        "nvapi NvAPI_Unload",
    };
    const Enumerated result = EnumerateNvidia(Machine("nvidia-desktop"));
    CHECK(NvidiaCalls(result.Trace) == expected);
}

TEST_CASE("If no NVIDIA property can be read, every property logs its line in the fixed order")
{
    const std::string clocks = "Failed to get GPU clock frequencies.";
    const LogLines expected = {
        Line("info", "NvapiClient::NvapiClient", "NVAPI initialized successfully"),
        Line("error", "NvmlClient::NvmlClient", "Failed to get device count: Unknown Error\n"),
        Line("info", "NvmlClient::NvmlClient", "NVML shutdown successfully"),
        Line("info", "NvmlClient::NvmlClient", "NVML initialized successfully"),
        Line("error", "NvmlClient::GetGpuHandle", "Invalid index: 0"),
        Nvapi("GetDeviceId", "Failed to get GPU Device ID."),
        Wmi("GetConfigError", "Failed to get ConfigManagerErrorCode from WMI"),
        Nvapi("GetCardName", "Failed to get GPU name."),
        Nvapi("GetBusId", "Failed to get GPU bus ID."),
        Wmi("GetAdapterStatus", "Failed to get Status from WMI"),
        Wmi("GetAdapterRam", "Failed to get AdapterRAM from WMI"),
        Wmi("GetAdapterName", "Failed to get Adapter Name from WMI"),
        Nvapi("GetEccDoubleBitErrors", "Failed to get GPU ECC error info."),
        Nvapi("GetEccSingleBitErrors", "Failed to get GPU ECC error info."),
        Nvapi("GetEccStatus", "Failed to get GPU ECC status."),
        Nvapi("GetNvidiaSli", "Failed to get NVIDIA SLI status."),
        Nvapi("GetBiosVersion", "Failed to get GPU BIOS version."),
        Wmi("GetDriverReleaseDate", "Failed to get Driver Date from WMI"),
        Nvapi("GetShaders", "Failed to get GPU shaders."),
        Nvapi("GetCores", "Failed to get GPU cores."),
        Nvapi("GetMemoryBusWidth", "Failed to get GPU Memory Bus Width."),
        Nvml("GetMemoryBandwidth", "Failed to get memory clock speed"),
        Nvapi("GetMemorySharedSize", "Failed to get shared memory size."),
        Nvapi("GetMemorySize", "Failed to get memory size."),
        Nvapi("GetMemoryBoostClock", clocks),
        Nvapi("GetMemoryClockMax", clocks),
        Nvapi("GetGpuBoostClock", clocks),
        Nvapi("GetGpuClockMax", clocks),
        Nvapi("GetMultiGpuSupport", "Failed to get NVIDIA MultiGPU Support."),
        Nvapi("GetGpuType", "Failed to get GPU type."),
        Nvml("GetTemperatureShutdown", "Failed to get temperature shutdown"),
        Nvml("GetTemperatureSlowdown", "Failed to get temperature slowdown"),
        Nvml("GetMaxTemperature", "Failed to get max temperature"),
        Nvml("GetCudaCapability", "Failed to get CUDA compute capability"),
        Nvapi("GetPciLanes", "Failed to get GPU PCI lanes."),
        Nvml("GetPcieTransferRate", "Failed to get PCIe link generation"),
        Nvml("GetPcieGeneration", "Failed to get PCIe generation") + "\n",
        Nvapi("GetBusInterface", "Failed to get bus interface."),
        Nvapi("GetChipName", "Failed to get chip name."),
        Nvapi("GetSubsystemId", "Failed to get GPU subsystem ID."),
        Nvml("GetGraphicCardSerialNumber", "Failed to get graphics card serial number"),
        Wmi("GetDriverVersion", "Failed to get driver version from WMI"),
        Wmi("GetCurrentRefreshRate", "Failed to get current refresh rate from WMI"),
        Wmi("GetCurrentResolution", "Failed to get current resolution from WMI."),
        Wmi("GetUserConfig", "Failed to get ConfigManagerUserConfig from WMI"),
        Line("error", "NvmlClient::~NvmlClient", "Failed to shutdown NVML. Status code: 1"),
        Line("info", "NvmlClient::~NvmlClient", "NVML shutdown successfully"),
        Line("info", "NvapiClient::~NvapiClient", "NVAPI unloaded successfully"),
    };
    CHECK(EnumerateNvidia(SilentMachine()).Log == expected);
}

TEST_CASE("If no NVIDIA property can be read, the record has its defaults")
{
    const Json expected = Json::parse(R"({
        "AvailabilityCode": 3, "AvailabilityStatus": "RunningFullPower", "ConfigError": 0,
        "ConfigErrorStatus": "DeviceWorkingProperly", "UserConfig": false, "CurrentResolution": "",
        "CurrentRefreshRate": 0, "DriverVersion": "", "IsAeroEnabled": true, "GraphicsCardSn": "Unknown", "BusId": 0,
        "DeviceId": "", "SubsystemId": "", "CardName": "", "ChipName": "", "Manufacturer": "Nvidia", "BusInterface": "",
        "PcieGeneration": 0.0, "PciTransferRate": 0.0, "PciLanes": 0, "PixelFillRate": 0.0, "TextureFillRate": 0.0,
        "CudaCapability": 0.0, "MaxTemperature": 0, "TemperateSlowdown": 0, "TemperatureShutdown": 0,
        "GpuType": "UNKNOWN", "MultiGpuSupport": false, "GpuClockMax": 0.0, "GpuBoostClock": 0.0, "MemoryClockMax": 0.0,
        "MemoryBoostClock": 0.0, "MemorySize": 0, "MemorySharedSize": 0, "MemoryType": "UNKNOWN",
        "MemoryBandwidth": 0.0, "MemoryBusWidth": 0, "Cores": 0, "Shaders": 0, "DriverReleaseDate": "",
        "BiosVersion": "", "NvidiaSli": false, "AmdCrossfire": false, "EccStatus": 0, "EccSingleBitErrors": 0,
        "EccDoubleBitErrors": 0, "AdapterName": "", "AdapterRam": 0, "AdapterStatus": ""})");
    const Enumerated result = EnumerateNvidia(SilentMachine());
    REQUIRE(result.Cards.size() == 1);
    CHECK(result.Card(0) == expected);
}
