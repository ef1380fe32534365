#include "NvidiaRun.h"

#include <algorithm>

#include <doctest/doctest.h>

namespace orvel::tests {

Json FullDesktop()
{
    Json machine = Machine("nvidia-desktop");
    machine["nvapi"]["0xD2D25687"] = {2, 2};
    Gpu(machine)["NvAPI_GPU_GetMemoryInfoEx"] = {{"offset32", 17133731840}, {"offset40", 12079595520}};
    Gpu(machine)["NvAPI_GPU_GetECCStatusInfo"] = {{"supported", true}, {"enabled", true}};
    Gpu(machine)["NvAPI_GPU_GetECCErrorInfo"] = {{"single", 3}, {"double", 5}};
    Device(machine)["nvmlDeviceGetSerial"] = "1324521012345";
    return machine;
}

Json FullDesktopCard(const Json& otherFields)
{
    Json card = Json::parse(R"({
        "AvailabilityCode": 3, "AvailabilityStatus": "RunningFullPower", "ConfigError": 0,
        "ConfigErrorStatus": "DeviceWorkingProperly", "UserConfig": false, "CurrentResolution": "2560x1440",
        "CurrentRefreshRate": 165, "DriverVersion": "30.0.15.1252", "IsAeroEnabled": true,
        "GraphicsCardSn": "1324521012345", "BusId": 1, "DeviceId": "2504", "SubsystemId": "397d-1462",
        "CardName": "NVIDIA GeForce RTX 3060", "ChipName": "NVIDIA GeForce RTX 3060", "Manufacturer": "Nvidia",
        "BusInterface": "PCI Express", "PcieGeneration": 1.0, "PciTransferRate": 31504.0, "PciLanes": 16,
        "PixelFillRate": 0.0, "TextureFillRate": 0.0, "CudaCapability": 8.6, "MaxTemperature": 93,
        "TemperateSlowdown": 95, "TemperatureShutdown": 98, "GpuType": "Discrete", "MultiGpuSupport": true,
        "GpuClockMax": 1777.0, "GpuBoostClock": 1777.0, "MemoryClockMax": 7501.0, "MemoryBoostClock": 7501.0,
        "MemorySize": 3489660928, "MemorySharedSize": 4248829952, "MemoryType": "DDR4",
        "MemoryBandwidth": 351.609375, "MemoryBusWidth": 192, "Cores": 3584, "Shaders": 3584,
        "DriverReleaseDate": "20220428000000.000000-000", "BiosVersion": "94.06.14.00.5B", "NvidiaSli": true,
        "AmdCrossfire": false, "EccStatus": 2, "EccSingleBitErrors": 3, "EccDoubleBitErrors": 5,
        "AdapterName": "NVIDIA GeForce RTX 3060", "AdapterRam": 4095, "AdapterStatus": "OK"})");
    card.update(otherFields);
    return AsFloats(card);
}

Json& Gpu(Json& machine, size_t index)
{
    return machine["nvapi"]["gpus"][index];
}

Json& Device(Json& machine, size_t index)
{
    return machine["nvml"]["devices"][index];
}

Enumerated EnumerateNvidia(const Json& machine)
{
    Enumerated result = Enumerate(machine);
    const std::string amd = Line("error", "ADLWrapper::ADLWrapper", "ADL initialization failed");
    result.Log.erase(std::find(result.Log.begin(), result.Log.end(), amd), result.Log.end());
    for (const auto& [interface, objects] : result.Live) {
        CHECK_MESSAGE(objects == 0, interface << " has live objects");
    }
    return result;
}

std::string EndLine(const std::string& reason)
{
    return Line("error", "GraphicCardEnumeration::QueryGraphicCards", "Unexpected error occurred: " + reason);
}

void CheckNvidiaEnds(const Json& machine, const std::string& reason)
{
    const Enumerated result = EnumerateNvidia(machine);
    CHECK(result.Cards.empty());
    REQUIRE_FALSE(result.Log.empty());
    CHECK(result.Log.back() == EndLine(reason));
    CHECK(result.Thrown == nullptr);
}

LogLines WithSession(const LogLines& lines)
{
    LogLines all = {Line("info", "NvapiClient::NvapiClient", "NVAPI initialized successfully"),
                    Line("info", "NvmlClient::NvmlClient", "NVML initialized successfully")};
    all.insert(all.end(), lines.begin(), lines.end());
    all.push_back(Line("info", "NvmlClient::~NvmlClient", "NVML shutdown successfully"));
    all.push_back(Line("info", "NvapiClient::~NvapiClient", "NVAPI unloaded successfully"));
    return all;
}

} // namespace orvel::tests
