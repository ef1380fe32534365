// A failed call of a getter only resets the getter's properties to their defaults. Without a session there is no record.

#include "Faults.h"

namespace orvel::tests {

namespace {

const std::string nvidia = "Nvidia";

const std::map<std::string, Fields> nvapiFields = {
    {"NvAPI_GPU_GetFullName", {"CardName", "ChipName"}},
    {"NvAPI_GPU_GetBusId", {"BusId"}},
    {"NvAPI_GPU_GetBusType", {"BusInterface"}},
    {"NvAPI_GPU_GetPCIIdentifiers", {"DeviceId", "SubsystemId"}}, // every NVIDIA row matches an empty device id
    {"NvAPI_GPU_GetGPUType", {"GpuType"}},
    {"NvAPI_GPU_GetVbiosVersionString", {"BiosVersion"}},
    {"NvAPI_GPU_GetGpuCoreCount", {"Cores", "Shaders"}},
    {"NvAPI_GPU_GetRamBusWidth", {"MemoryBusWidth"}},
    {"NvAPI_GPU_GetCurrentPCIEDownstreamWidth", {"PciLanes"}},
    {"NvAPI_GPU_GetMemoryInfoEx", {"MemorySize", "MemorySharedSize"}},
    {"NvAPI_GPU_GetAllClockFrequencies", {"MemoryBoostClock", "MemoryClockMax", "GpuBoostClock", "GpuClockMax"}},
    {"NvAPI_GPU_GetECCStatusInfo", {"EccStatus"}},
    {"NvAPI_GPU_GetECCErrorInfo", {"EccSingleBitErrors", "EccDoubleBitErrors"}},
    {"0xD2D25687", {"NvidiaSli", "MultiGpuSupport"}},
};

const std::map<std::string, Fields> nvmlFields = {
    {"nvmlDeviceGetSerial", {"GraphicsCardSn"}},
    {"nvmlDeviceGetCudaComputeCapability", {"CudaCapability"}},
    {"nvmlDeviceGetClockInfo", {"MemoryBandwidth"}},
    {"nvmlDeviceGetMemoryBusWidth", {"MemoryBandwidth"}},
    {"nvmlDeviceGetCurrPcieLinkGeneration", {"PcieGeneration"}},
    {"nvmlDeviceGetMaxPcieLinkGeneration", {"PciTransferRate"}},
    {"nvmlDeviceGetMaxPcieLinkWidth", {"PciTransferRate"}},
};

const std::map<std::string, std::string> fieldOfThreshold = {
    {"0", "TemperatureShutdown"}, {"1", "TemperateSlowdown"}, {"3", "MaxTemperature"}};

/// Every property from NVML.
const Fields allOfNvml = {"GraphicsCardSn",  "CudaCapability", "MemoryBandwidth",     "PcieGeneration",
                          "PciTransferRate", "MaxTemperature", "TemperatureShutdown", "TemperateSlowdown"};

} // namespace

std::vector<Fault> NvapiFaults()
{
    std::vector<Fault> faults;
    faults.push_back(Removing(Pointer("/nvapi"), Lost({nvidia})));
    faults.push_back(Setting(Pointer("/nvapi/gpus"), Json::array(), Lost({nvidia})));
    faults.push_back(Hiding("nvapi", "nvapi_QueryInterface", Lost({nvidia})));
    for (const char* function : {"NvAPI_Initialize", "NvAPI_EnumPhysicalGPUs"}) {
        faults.push_back(Hiding("nvapi", function, Lost({nvidia})));
        faults.push_back(Setting(Pointer("/nvapi") / function, -1, Lost({nvidia})));
    }
    faults.push_back(Setting(Pointer("/nvapi/NvAPI_EnumPhysicalGPUs"), StatusAndRubbish(-1), Lost({nvidia})));
    faults.push_back(Hiding("nvapi", "NvAPI_Unload", StaysAlive("nvapi")));
    faults.push_back(Setting(Pointer("/nvapi/NvAPI_Unload"), -1, StaysAlive("nvapi")));
    for (const auto& [function, fields] : nvapiFields) {
        const bool isSystems = function == "0xD2D25687";
        const Pointer path = (isSystems ? Pointer("/nvapi") : Pointer("/nvapi/gpus/0")) / function;
        faults.push_back(Hiding("nvapi", function, Other(nvidia, fields)));
        faults.push_back(Setting(path, Status(-1), Other(nvidia, fields)));
        faults.push_back(Setting(path, StatusAndValue(-1, HealthyWorkstation()[path]), Other(nvidia, fields)));
        faults.push_back(Setting(path, StatusAndRubbish(-1), Other(nvidia, fields)));
        faults.push_back(Removing(path, Other(nvidia, fields)));
    }
    return faults;
}

std::vector<Fault> NvmlFaults()
{
    std::vector<Fault> faults;
    faults.push_back(Removing(Pointer("/nvml"), Lost({nvidia})));
    faults.push_back(Setting(Pointer("/nvml/nvmlInit_v2"), 9, Lost({nvidia})));
    faults.push_back(Setting(Pointer("/nvml/nvmlShutdown"), 999, StaysAlive("nvml")));
    faults.push_back(Setting(Pointer("/nvml/nvmlDeviceGetCount_v2"), Status(999), Other(nvidia, allOfNvml)));
    faults.push_back(Setting(Pointer("/nvml/nvmlDeviceGetCount_v2"), StatusAndValue(999, 1), Other(nvidia, allOfNvml)));
    faults.push_back(Setting(Pointer("/nvml/nvmlDeviceGetCount_v2"), StatusAndRubbish(999), Other(nvidia, allOfNvml)));
    faults.push_back(Setting(Pointer("/nvml/nvmlDeviceGetCount_v2"), 0, Other(nvidia, allOfNvml)));
    faults.push_back(Setting(Pointer("/nvml/devices"), Json::array(), Other(nvidia, allOfNvml)));
    faults.push_back(Setting(Pointer("/nvml/devices/0/handle"), 15, Other(nvidia, allOfNvml)));
    faults.push_back(Setting(Pointer("/nvml/devices/0/handle"), StatusAndRubbish(15), Other(nvidia, allOfNvml)));
    const Pointer device("/nvml/devices/0");
    for (const auto& [function, fields] : nvmlFields) {
        faults.push_back(Setting(device / function, Status(999), Other(nvidia, fields)));
        faults.push_back(Setting(device / function, StatusAndRubbish(999), Other(nvidia, fields)));
        faults.push_back(
            Setting(device / function, StatusAndValue(999, HealthyWorkstation()[device / function]), Other(nvidia, fields)));
        faults.push_back(Removing(device / function, Other(nvidia, fields)));
    }
    const Pointer thresholds = device / "nvmlDeviceGetTemperatureThreshold";
    faults.push_back(Removing(thresholds, Other(nvidia, {"TemperatureShutdown", "TemperateSlowdown", "MaxTemperature"})));
    for (const auto& [threshold, field] : fieldOfThreshold) {
        faults.push_back(Setting(thresholds / threshold, Status(999), Other(nvidia, {field})));
        faults.push_back(Setting(thresholds / threshold, StatusAndRubbish(999), Other(nvidia, {field})));
        faults.push_back(Removing(thresholds / threshold, Other(nvidia, {field})));
    }
    return faults;
}

} // namespace orvel::tests
