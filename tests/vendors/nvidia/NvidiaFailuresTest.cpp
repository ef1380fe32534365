// Every function of NVAPI and NVML fails once: the remaining record, or the end of the run.

#include <algorithm>

#include <doctest/doctest.h>

#include <windows.h>

#include "NvidiaRun.h"

using namespace orvel::tests;

namespace {

struct Failure {
    std::string Function;
    Json Fields; ///< fields of the record that have their defaults
};

const std::vector<Failure> nvapiFailures = {
    {"NvAPI_GPU_GetFullName", {{"CardName", ""}, {"ChipName", ""}}},
    {"NvAPI_GPU_GetBusId", {{"BusId", 0}}},
    {"NvAPI_GPU_GetBusType", {{"BusInterface", ""}}},
    {"NvAPI_GPU_GetPCIIdentifiers", {{"DeviceId", ""}, {"SubsystemId", ""}}},
    {"NvAPI_GPU_GetGPUType", {{"GpuType", "UNKNOWN"}}},
    {"NvAPI_GPU_GetVbiosVersionString", {{"BiosVersion", ""}}},
    {"NvAPI_GPU_GetGpuCoreCount", {{"Cores", 0}, {"Shaders", 0}}},
    {"NvAPI_GPU_GetRamBusWidth", {{"MemoryBusWidth", 0}}},
    {"NvAPI_GPU_GetCurrentPCIEDownstreamWidth", {{"PciLanes", 0}}},
    {"NvAPI_GPU_GetMemoryInfoEx", {{"MemorySharedSize", 0}, {"MemorySize", 0}}},
    {"NvAPI_GPU_GetAllClockFrequencies",
     {{"MemoryBoostClock", 0.0}, {"MemoryClockMax", 0.0}, {"GpuBoostClock", 0.0}, {"GpuClockMax", 0.0}}},
    {"NvAPI_GPU_GetECCStatusInfo", {{"EccStatus", 0}}},
    {"NvAPI_GPU_GetECCErrorInfo", {{"EccSingleBitErrors", 0}, {"EccDoubleBitErrors", 0}}},
    {"0xD2D25687", {{"NvidiaSli", false}, {"MultiGpuSupport", false}}},
};

const std::vector<Failure> nvmlFailures = {
    {"nvmlDeviceGetSerial", {{"GraphicsCardSn", "Unknown"}}},
    {"nvmlDeviceGetCudaComputeCapability", {{"CudaCapability", 0.0}}},
    {"nvmlDeviceGetTemperatureThreshold", {{"TemperatureShutdown", 0}, {"TemperateSlowdown", 0}, {"MaxTemperature", 0}}},
    {"nvmlDeviceGetClockInfo", {{"MemoryBandwidth", 0.0}}},
    {"nvmlDeviceGetMemoryBusWidth", {{"MemoryBandwidth", 0.0}}},
    {"nvmlDeviceGetCurrPcieLinkGeneration", {{"PcieGeneration", 0.0}}},
    {"nvmlDeviceGetMaxPcieLinkGeneration", {{"PciTransferRate", 0.0}}},
    {"nvmlDeviceGetMaxPcieLinkWidth", {{"PciTransferRate", 0.0}}},
    {"handle",
     {{"GraphicsCardSn", "Unknown"},
      {"CudaCapability", 0.0},
      {"TemperatureShutdown", 0},
      {"TemperateSlowdown", 0},
      {"MaxTemperature", 0},
      {"MemoryBandwidth", 0.0},
      {"PcieGeneration", 0.0},
      {"PciTransferRate", 0.0}}},
};

Json Unresolved(const std::string& function)
{
    Json machine = FullDesktop();
    machine["nvapi"]["unresolved"] = Json::array({function});
    return machine;
}

/// Checks that the machine still has its record, which differs in these fields only.
void CheckRecord(const Json& machine, const Json& fields)
{
    const Enumerated result = EnumerateNvidia(machine);
    REQUIRE(result.Cards.size() == 1);
    CHECK(AsFloats(result.Card(0)) == FullDesktopCard(fields));
    CHECK(result.Thrown == nullptr);
}

bool Contains(const LogLines& lines, const std::string& line)
{
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

} // namespace

TEST_CASE("If an NVAPI function cannot be resolved, only its fields have their defaults")
{
    for (const auto& [function, fields] : nvapiFailures) {
        CAPTURE(function);
        CheckRecord(Unresolved(function), fields);
    }
}

TEST_CASE("If an NVAPI function fails, only its fields have their defaults")
{
    for (const auto& [function, fields] : nvapiFailures) {
        CAPTURE(function);
        Json machine = FullDesktop();
        Json& place = function == "0xD2D25687" ? machine["nvapi"] : Gpu(machine);
        place[function] = {{"status", -1}};
        CheckRecord(machine, fields);
    }
}

TEST_CASE("If an NVML function fails, only its fields have their defaults")
{
    for (const auto& [function, fields] : nvmlFailures) {
        CAPTURE(function);
        Json machine = FullDesktop();
        Device(machine)[function] = {{"status", 15}};
        if (function == "handle") {
            Device(machine)[function] = 15;
        }
        CheckRecord(machine, fields);
    }
}

TEST_CASE("If NVML's device count fails, only NVML's fields have their defaults")
{
    Json machine = FullDesktop();
    machine["nvml"]["nvmlDeviceGetCount_v2"] = {{"status", 3}};
    CheckRecord(machine, nvmlFailures.back().Fields); // the fields of a failed device handle
}

TEST_CASE("An NVAPI that cannot be initialised or enumerated ends the run")
{
    CheckNvidiaEnds(Unresolved("nvapi_QueryInterface"), "Failed to initialize NVAPI. Status code: -1");
    CheckNvidiaEnds(Unresolved("NvAPI_Initialize"), "Failed to initialize NVAPI. Status code: -3");
    CheckNvidiaEnds(Unresolved("NvAPI_EnumPhysicalGPUs"), "Failed to enumerate physical GPUs. Status code: -3");
    Json machine = FullDesktop();
    machine["nvapi"]["NvAPI_EnumPhysicalGPUs"] = -6;
    CheckNvidiaEnds(machine, "Failed to enumerate physical GPUs. Status code: -6");
}

TEST_CASE("An NVML that cannot be initialised ends the run")
{
    Json machine = FullDesktop();
    machine["nvml"]["nvmlInit_v2"] = 999;
    CheckNvidiaEnds(machine, "Failed to initialize NVML. Status code: 999");
}

TEST_CASE("A failed NVML shutdown ends the run after a failed device count, and is only logged after the record")
{
    Json machine = FullDesktop();
    machine["nvml"]["nvmlShutdown"] = 999;
    const Enumerated recorded = Enumerate(machine);
    REQUIRE(recorded.Cards.size() == 1);
    CHECK(AsFloats(recorded.Card(0)) == FullDesktopCard());
    CHECK(Contains(recorded.Log, Line("error", "NvmlClient::~NvmlClient", "Failed to shutdown NVML. Status code: 999")));
    CHECK(Contains(recorded.Log, Line("info", "NvmlClient::~NvmlClient", "NVML shutdown successfully")));
    machine["nvml"]["nvmlDeviceGetCount_v2"] = {{"status", 15}};
    const Enumerated ended = Enumerate(machine);
    CHECK(ended.Cards.empty());
    CHECK(Contains(ended.Log, EndLine("Failed to shutdown NVML. Status code: 999")));
    CHECK(Only(ended.Trace, "nvapi").back() == "nvapi NvAPI_Unload");
}

TEST_CASE("A failed unload of NVAPI is only logged")
{
    Json refusing = FullDesktop();
    refusing["nvapi"]["NvAPI_Unload"] = -209;
    for (const auto& [machine, status] :
         {std::pair(refusing, std::string("-209")), std::pair(Unresolved("NvAPI_Unload"), std::string("-3"))}) {
        CAPTURE(status);
        const Enumerated result = Enumerate(machine);
        REQUIRE(result.Cards.size() == 1);
        CHECK(AsFloats(result.Card(0)) == FullDesktopCard());
        CHECK(Contains(result.Log,
                       Line("error", "NvapiClient::~NvapiClient", "Failed to unload NVAPI. Status code: " + status)));
        CHECK(Contains(result.Log, Line("info", "NvapiClient::~NvapiClient", "NVAPI unloaded successfully")));
        Simulate(Json::object());
        ::FreeLibrary(::GetModuleHandleW(L"nvapi64.dll")); // the library keeps it after a failed unload
    }
}
