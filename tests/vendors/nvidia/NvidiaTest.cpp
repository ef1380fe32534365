// NVIDIA's enumerator, on the desktop and the machine with two cards, with one deviation each.

#include <algorithm>

#include <doctest/doctest.h>

#include "NvidiaRun.h"

using namespace orvel::tests;

namespace {

const std::string missingKey = "invalid unordered_map<K, T> key";
const std::string videoControllers =
    "wmi query SELECT * FROM Win32_VideoController WHERE PNPDeviceID LIKE 'PCI%VEN_10DE&DEV_";

Json DesktopWithMemoryTypes(const std::vector<Json>& types)
{
    Json machine = FullDesktop();
    Json& modules = machine["wmi"]["classes"]["Win32_PhysicalMemory"] = Json::array();
    for (const Json& type : types) {
        modules.push_back({{"SMBIOSMemoryType", type}, {"Speed", 3200}, {"TotalWidth", 64}});
    }
    return machine;
}

std::string MemoryTypeOf(const std::vector<Json>& types)
{
    return EnumerateNvidia(DesktopWithMemoryTypes(types)).Card(0)["MemoryType"];
}

} // namespace

TEST_CASE("A GPU that supports everything fills every field, and only the sessions' lines are logged")
{
    const Enumerated result = EnumerateNvidia(FullDesktop());
    REQUIRE(result.Cards.size() == 1);
    CHECK(AsFloats(result.Card(0)) == FullDesktopCard());
    CHECK(result.Log == WithSession({}));
}

TEST_CASE("Two NVIDIA GPUs have one record: NVAPI's first GPU, with the NVML device of the same index and its WMI row")
{
    const Enumerated result = EnumerateNvidia(Machine("nvidia-two-cards"));
    REQUIRE(result.Cards.size() == 1);
    CHECK(result.Card(0)["CardName"] == "NVIDIA GeForce RTX 2070 SUPER");
    CHECK(result.Card(0)["DeviceId"] == "1e84");
    CHECK(result.Card(0)["CudaCapability"] == 7.5);
    CHECK(result.Card(0)["AdapterName"] == "NVIDIA GeForce RTX 2070 SUPER"); // WMI's second row
    CHECK(result.Card(0)["GpuClockMax"] == 1770.0);
    CHECK(result.Card(0)["MemoryClockMax"] == 7001.0);
}

TEST_CASE("Of two rows with the same device id, the first is used")
{
    Json machine = FullDesktop();
    Json second = VideoController(machine);
    second["Name"] = "the second";
    machine["wmi"]["classes"]["Win32_VideoController"].push_back(second);
    const Enumerated result = EnumerateNvidia(machine);
    REQUIRE(result.Cards.size() == 1);
    CHECK(result.Card(0)["AdapterName"] == "NVIDIA GeForce RTX 3060");
    VideoController(machine)["Name"] = "the first";
    CHECK(EnumerateNvidia(machine).Card(0)["AdapterName"] == "the first");
}

TEST_CASE("A GPU without PCI identifiers has no device id, and uses the first NVIDIA row")
{
    Json machine = Machine("nvidia-two-cards");
    Gpu(machine).erase("NvAPI_GPU_GetPCIIdentifiers");
    const Enumerated result = EnumerateNvidia(machine);
    REQUIRE(result.Cards.size() == 1);
    CHECK(result.Card(0)["DeviceId"] == "");
    CHECK(result.Card(0)["SubsystemId"] == "");
    CHECK(result.Card(0)["AdapterName"] == "NVIDIA GeForce RTX 3060");
    CHECK(Only(result.Trace, videoControllers) == std::vector<std::string>{videoControllers + "%'"});
}

TEST_CASE("A device id with leading zeros is queried with them, in lower case")
{
    Json machine = FullDesktop();
    Gpu(machine)["NvAPI_GPU_GetPCIIdentifiers"]["device"] = 0x0A3C10DE;
    VideoController(machine)["PNPDeviceID"] = "PCI\\VEN_10DE&DEV_0A3C&SUBSYS_00001458&REV_A2\\4&1";
    const Enumerated result = EnumerateNvidia(machine);
    CHECK(result.Card(0)["DeviceId"] == "0a3c");
    CHECK(Only(result.Trace, videoControllers) == std::vector<std::string>{videoControllers + "0a3c%'"});
}

TEST_CASE("If NVAPI has no GPUs, its GPU list fails, which ends the run")
{
    Json machine = FullDesktop();
    machine["nvapi"]["gpus"] = Json::array();
    CheckNvidiaEnds(machine, "Failed to enumerate physical GPUs. Status code: -6");
}

TEST_CASE("If NVAPI successfully lists 0 GPUs, there is no record, and no further call")
{
    Json machine = FullDesktop();
    machine["nvapi"]["gpus"] = Json::array();
    machine["nvapi"]["NvAPI_EnumPhysicalGPUs"] = 0;
    const Enumerated result = EnumerateNvidia(machine);
    CHECK(result.Cards.empty());
    CHECK(result.Log == WithSession({}));
    CHECK(Only(result.Trace, "nvapi") ==
          std::vector<std::string>{"nvapi NvAPI_Initialize", "nvapi NvAPI_EnumPhysicalGPUs", "nvapi NvAPI_Unload"});
    CHECK(Only(result.Trace, "nvml") == std::vector<std::string>{"nvml nvmlInit_v2", "nvml nvmlDeviceGetCount_v2",
                                                                 "nvml nvmlDeviceGetHandleByIndex_v2 0",
                                                                 "nvml nvmlShutdown"});
    CHECK(Only(result.Trace, videoControllers).empty());
}

TEST_CASE("Without NVML devices one line reports the index, and every NVML property is logged and has its default")
{
    Json machine = FullDesktop();
    machine["nvml"]["devices"] = Json::array();
    const Enumerated result = EnumerateNvidia(machine);
    REQUIRE(result.Cards.size() == 1);
    CHECK(AsFloats(result.Card(0)) == FullDesktopCard({{"TemperatureShutdown", 0},
                                                       {"TemperateSlowdown", 0},
                                                       {"MaxTemperature", 0},
                                                       {"CudaCapability", 0.0},
                                                       {"PcieGeneration", 0.0},
                                                       {"PciTransferRate", 0.0},
                                                       {"MemoryBandwidth", 0.0},
                                                       {"GraphicsCardSn", "Unknown"}}));
    const auto refused = [](const std::string& getter, const std::string& text) {
        return Line("error", "NvmlClient::" + getter, text + ": Invalid Argument");
    };
    CHECK(result.Log == WithSession({Line("error", "NvmlClient::GetGpuHandle", "Invalid index: 0"),
                                     refused("GetMemoryBandwidth", "Failed to get memory clock speed"),
                                     refused("GetTemperatureShutdown", "Failed to get temperature shutdown"),
                                     refused("GetTemperatureSlowdown", "Failed to get temperature slowdown"),
                                     refused("GetMaxTemperature", "Failed to get max temperature"),
                                     refused("GetCudaCapability", "Failed to get CUDA compute capability"),
                                     refused("GetPcieTransferRate", "Failed to get PCIe link generation"),
                                     refused("GetPcieGeneration", "Failed to get PCIe generation") + "\n",
                                     refused("GetGraphicCardSerialNumber", "Failed to get graphics card serial number")}));
}

TEST_CASE("A card without a WMI row ends the run, because its availability has no name")
{
    Json machine = FullDesktop();
    Gpu(machine)["NvAPI_GPU_GetPCIIdentifiers"]["device"] = 0x1E8410DE;
    const Enumerated result = EnumerateNvidia(machine);
    CHECK(result.Cards.empty());
    const auto warning = [](const std::string& getter, const std::string& text) {
        return Line("warning", "BaseGraphicCard::" + getter, text);
    };
    LogLines lines = WithSession({warning("GetAvailabilityCode", "Failed to get Availability from WMI"),
                                  warning("GetConfigError", "Failed to get ConfigManagerErrorCode from WMI"),
                                  warning("GetAdapterStatus", "Failed to get Status from WMI"),
                                  warning("GetAdapterRam", "Failed to get AdapterRAM from WMI"),
                                  warning("GetAdapterName", "Failed to get Adapter Name from WMI"),
                                  warning("GetDriverReleaseDate", "Failed to get Driver Date from WMI"),
                                  warning("GetDriverVersion", "Failed to get driver version from WMI"),
                                  warning("GetCurrentRefreshRate", "Failed to get current refresh rate from WMI"),
                                  warning("GetCurrentResolution", "Failed to get current resolution from WMI."),
                                  warning("GetUserConfig", "Failed to get ConfigManagerUserConfig from WMI")});
    lines.push_back(EndLine(missingKey));
    CHECK(result.Log == lines);
}

TEST_CASE("An availability or a configuration error without a name ends the run")
{
    for (const char* property : {"Availability", "ConfigManagerErrorCode"}) {
        CAPTURE(property);
        Json machine = FullDesktop();
        VideoController(machine)[property] = 99;
        CheckNvidiaEnds(machine, missingKey);
    }
}

TEST_CASE("A failed query for the adapter logs one line, and the other vendors run")
{
    Json machine = Machine("nvidia-workstation");
    machine["wmi"]["failures"] = Json::array({{{"contains", "VEN_10DE"}, {"status", "0x80041001"}}});
    const Enumerated result = Enumerate(machine);
    REQUIRE(result.Cards.size() == 1);
    CHECK(result.Card(0)["Manufacturer"] == "Intel");
    const LogLines nvidia =
        WithSession({Line("error", "Nvidia::QueryInfo", "Failed to get Win32_VideoController fields from WMI")});
    CHECK(std::search(result.Log.begin(), result.Log.end(), nvidia.begin(), nvidia.end()) != result.Log.end());
    CHECK(result.Log.back() == Line("error", "ADLWrapper::~ADLWrapper", "ADL Destroyed successfully"));
    CHECK(Only(result.Trace, "nvapi NvAPI_GPU") == std::vector<std::string>{"nvapi NvAPI_GPU_GetPCIIdentifiers"});
    CHECK(result.Thrown == nullptr);
}

TEST_CASE("A failed WMI connection is a failed query")
{
    Json machine = FullDesktop();
    machine["wmi"]["connect"] = "0x80041003";
    const Enumerated result = EnumerateNvidia(machine);
    CHECK(result.Cards.empty());
    const LogLines nvidia =
        WithSession({Line("error", "Nvidia::QueryInfo", "Failed to get Win32_VideoController fields from WMI")});
    CHECK(std::search(result.Log.begin(), result.Log.end(), nvidia.begin(), nvidia.end()) != result.Log.end());
}

TEST_CASE("QueryGraphicCards throws the status of a failed query for the memory modules, with both sessions closed")
{
    Json machine = FullDesktop();
    machine["wmi"]["failures"] =
        Json::array({{{"contains", "SELECT SMBIOSMemoryType"}, {"status", "0x80041032"}}}); // -2147217358
    const Enumerated result = EnumerateNvidia(machine);
    CHECK(result.Cards.empty());
    CHECK(result.Thrown == Json{{"type", "long"}, {"value", -2147217358}});
    CHECK(result.Log == WithSession({}));
}

TEST_CASE("The memory type is the first type above 0 of the machine's modules, else 2")
{
    CHECK(MemoryTypeOf({0, 24, 26}) == "DDR3");
    CHECK(MemoryTypeOf({0, 0}) == "UNKNOWN");
    CHECK(MemoryTypeOf({}) == "UNKNOWN");
    CHECK(MemoryTypeOf({0, nullptr, 26}) == "UNKNOWN");
}

TEST_CASE("A memory type without a name ends the run")
{
    for (const uint32_t type : {12U, 21U, 23U, 32U, 34U}) {
        CAPTURE(type);
        CheckNvidiaEnds(DesktopWithMemoryTypes({type}), missingKey);
    }
}

TEST_CASE("A bus or GPU type without a name ends the run")
{
    Json bus = FullDesktop();
    Gpu(bus)["NvAPI_GPU_GetBusType"] = 5;
    CheckNvidiaEnds(bus, missingKey);
    Json type = FullDesktop();
    Gpu(type)["NvAPI_GPU_GetGPUType"] = 3;
    CheckNvidiaEnds(type, missingKey);
}

TEST_CASE("Without opencl.dll the run ends after both sessions are opened, and they are closed")
{
    Json machine = FullDesktop();
    machine.erase("opencl");
    const Enumerated result = EnumerateNvidia(machine);
    CHECK(result.Cards.empty());
    const std::string end = EndLine("Failed to load opencl.dll");
    LogLines lines = {end}; // Intel's
    const LogLines session = WithSession({});
    lines.insert(lines.end(), session.begin(), session.end());
    lines.insert(lines.end(), {end, end}); // NVIDIA's and AMD's
    CHECK(result.Log == lines);
    CHECK(Only(result.Trace, "nv") == std::vector<std::string>{"nvapi NvAPI_Initialize", "nvapi NvAPI_EnumPhysicalGPUs",
                                                               "nvml nvmlInit_v2", "nvml nvmlDeviceGetCount_v2",
                                                               "nvml nvmlDeviceGetHandleByIndex_v2 0", "nvml nvmlShutdown",
                                                               "nvapi NvAPI_Unload"});
}

TEST_CASE("A machine without NVIDIA's driver has no NVIDIA record")
{
    Json machine = FullDesktop();
    machine.erase("nvapi");
    machine.erase("nvml");
    CheckNvidiaEnds(machine, "Failed to initialize NVAPI. Status code: -2");
    CHECK(Only(Trace(), "nvml").empty());
}

TEST_CASE("If NVML does not start, the run ends and NVAPI is unloaded")
{
    Json machine = FullDesktop();
    machine.erase("nvml");
    CheckNvidiaEnds(machine, "Failed to initialize NVML. Status code: 9");
    CHECK(Only(Trace(), "nvapi").back() == "nvapi NvAPI_Unload");
}

TEST_CASE("Shaders equal cores, the chip name is the card name, fill rates are 0, and CrossFire is false")
{
    for (const char* name : {"nvidia-desktop", "nvidia-workstation", "nvidia-two-cards", "nvidia-no-nvml-devices"}) {
        CAPTURE(name);
        const Enumerated result = EnumerateNvidia(Machine(name));
        REQUIRE_FALSE(result.Cards.empty());
        const Json card = result.Cards.back();
        CHECK(card["Manufacturer"] == "Nvidia");
        CHECK(card["Cores"] == card["Shaders"]);
        CHECK(card["ChipName"] == card["CardName"]);
        CHECK(card["PixelFillRate"] == 0.0);
        CHECK(card["TextureFillRate"] == 0.0);
        CHECK(card["AmdCrossfire"] == false);
    }
}
