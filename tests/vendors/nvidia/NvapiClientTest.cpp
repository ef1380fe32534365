// NVAPI's session and its GPUs. The simulated driver returns -9 for a wrong version word, so a successful call proves that
// the word was right.

#include "vendors/nvidia/NvapiClient.h"

#include <stdexcept>
#include <type_traits>

#include <doctest/doctest.h>

#include <windows.h>

#include "support/HostLog.h"

using namespace orvel::shared::enumeration;
using namespace orvel::tests;

static_assert(!std::is_copy_constructible_v<NvapiClient> && !std::is_copy_assignable_v<NvapiClient>);

namespace {

const std::string constructor = "NvapiClient::NvapiClient";
const std::string destructor = "NvapiClient::~NvapiClient";
const std::string initialized = "info " + constructor + ": NVAPI initialized successfully";
const std::string unloaded = "info " + destructor + ": NVAPI unloaded successfully";

/// A machine with one GPU.
Json MachineWith(const Json& gpu)
{
    return {{"nvapi", {{"gpus", Json::array({gpu})}}}};
}

/// A machine with this driver, whose GPU reports no properties.
Json MachineWithDriver(Json nvapi)
{
    nvapi["gpus"] = Json::array({Json::object()});
    return {{"nvapi", nvapi}};
}

/// Whether the driver's DLL is still loaded after the simulation has released its own reference.
bool IsDriverHeld()
{
    Simulate(Json::object());
    return ::GetModuleHandleW(L"nvapi64.dll") != nullptr;
}

/// Releases the reference that stays after a failed unload.
void LetDriverGo()
{
    CHECK(IsDriverHeld());
    ::FreeLibrary(::GetModuleHandleW(L"nvapi64.dll"));
    CHECK_FALSE(IsDriverHeld());
}

/// Checks that the constructor of the client throws this reason, logs this one line, and leaves nothing open.
void CheckRefused(const Json& nvapi, const std::string& reason, const std::string& line)
{
    CAPTURE(nvapi.dump());
    Simulate({{"nvapi", nvapi}});
    HostLog log;
    CHECK_THROWS_WITH_AS(NvapiClient(), reason.c_str(), std::runtime_error);
    CHECK(log.Lines == LogLines{"error " + constructor + ": " + line});
    CHECK(Live()["nvapi"] == 0);
    CHECK_FALSE(IsDriverHeld());
}

std::string BusInterfaceOf(int type)
{
    Simulate(MachineWith({{"NvAPI_GPU_GetBusType", type}}));
    const NvapiClient client;
    return client.GetBusInterface(client.GetGpuHandle(0));
}

std::string GpuTypeOf(int type)
{
    Simulate(MachineWith({{"NvAPI_GPU_GetGPUType", type}}));
    const NvapiClient client;
    return client.GetGpuType(client.GetGpuHandle(0));
}

} // namespace

TEST_CASE("A session with NVAPI starts and ends with a log line")
{
    Simulate(MachineWith(Json::object()));
    HostLog log;
    {
        const NvapiClient client;
        CHECK(client.GetGpuCount() == 1);
        CHECK(Live()["nvapi"] == 1);
    }
    CHECK(log.Lines == LogLines{initialized, unloaded});
    CHECK(Only(Trace(), "nvapi") ==
          std::vector<std::string>{"nvapi NvAPI_Initialize", "nvapi NvAPI_EnumPhysicalGPUs", "nvapi NvAPI_Unload"});
    CHECK(Live()["nvapi"] == 0);
    CHECK_FALSE(IsDriverHeld());
}

TEST_CASE("A machine without NVIDIA's driver has status -2")
{
    Simulate(Json::object());
    HostLog log;
    CHECK_THROWS_WITH_AS(NvapiClient(), "Failed to initialize NVAPI. Status code: -2", std::runtime_error);
    CHECK(log.Lines == LogLines{"error " + constructor + ": Failed to initialize NvAPI. Status code: -2"});
}

TEST_CASE("If a session cannot start, the log line has \"NvAPI\", the exception has \"NVAPI\", and nothing stays loaded")
{
    const auto check = [](const Json& nvapi, const std::string& status) {
        CheckRefused(nvapi, "Failed to initialize NVAPI. Status code: " + status,
                     "Failed to initialize NvAPI. Status code: " + status);
    };
    check({{"unresolved", Json::array({"nvapi_QueryInterface"})}}, "-1");
    check({{"unresolved", Json::array({"NvAPI_Initialize"})}}, "-3");
    check({{"NvAPI_Initialize", -220}}, "-220");
    check({{"NvAPI_Initialize", 7}}, "7");
}

TEST_CASE("After a failed enumeration NVAPI is unloaded without a line")
{
    const std::string text = "Failed to enumerate physical GPUs. Status code: ";
    CheckRefused({{"NvAPI_EnumPhysicalGPUs", -6}}, text + "-6", text + "-6");
    CheckRefused({{"unresolved", Json::array({"NvAPI_EnumPhysicalGPUs"})}}, text + "-3", text + "-3");
    Simulate({{"nvapi", {{"NvAPI_EnumPhysicalGPUs", -6}, {"NvAPI_Unload", -209}}}});
    HostLog log;
    CHECK_THROWS_AS(NvapiClient(), std::runtime_error);
    CHECK(log.Lines == LogLines{"error " + constructor + ": " + text + "-6"});
    LetDriverGo();
}

TEST_CASE("A failed unload logs the driver's status and then success, and keeps the driver loaded")
{
    struct Case {
        Json Nvapi;
        std::string Status;
    };
    for (const auto& [nvapi, status] :
         {Case{{{"NvAPI_Unload", -209}}, "-209"}, Case{{{"unresolved", Json::array({"NvAPI_Unload"})}}, "-3"}}) {
        CAPTURE(status);
        Simulate(MachineWithDriver(nvapi));
        HostLog log;
        {
            const NvapiClient client;
        }
        CHECK(log.Lines ==
              LogLines{initialized, "error " + destructor + ": Failed to unload NVAPI. Status code: " + status, unloaded});
        LetDriverGo();
    }
}

TEST_CASE("A failed unload without a log is silent")
{
    Simulate(MachineWithDriver({{"NvAPI_Unload", -209}}));
    {
        const NvapiClient client;
    }
    LetDriverGo();
}

TEST_CASE("Handles after the last GPU are null")
{
    Simulate({{"nvapi", {{"NvAPI_EnumPhysicalGPUs", 0}, {"gpus", Json::array()}}}});
    {
        const NvapiClient client;
        CHECK(client.GetGpuCount() == 0);
        CHECK(client.GetGpuHandle(0) == nullptr);
        CHECK(client.GetGpuHandle(63) == nullptr);
    }
    Simulate({{"nvapi", {{"gpus", std::vector<Json>(64, Json::object())}}}});
    const NvapiClient client;
    CHECK(client.GetGpuCount() == 64);
    CHECK(client.GetGpuHandle(63) != nullptr);
    CHECK(client.GetGpuHandle(63) != client.GetGpuHandle(62));
}

TEST_CASE("Bus types 1 to 4 have a name, every other type throws")
{
    CHECK(BusInterfaceOf(1) == "PCI");
    CHECK(BusInterfaceOf(2) == "AGP");
    CHECK(BusInterfaceOf(3) == "PCI Express");
    CHECK(BusInterfaceOf(4) == "FPCI");
    for (const int type : {-1, 0, 5, 6}) {
        CAPTURE(type);
        CHECK_THROWS_WITH_AS(BusInterfaceOf(type), "invalid unordered_map<K, T> key", std::out_of_range);
    }
}

TEST_CASE("GPU types 0 to 2 have a name, every other type throws")
{
    CHECK(GpuTypeOf(0) == "Unknown");
    CHECK(GpuTypeOf(1) == "Integrated");
    CHECK(GpuTypeOf(2) == "Discrete");
    for (const int type : {-1, 3}) {
        CAPTURE(type);
        CHECK_THROWS_WITH_AS(GpuTypeOf(type), "invalid unordered_map<K, T> key", std::out_of_range);
    }
}

TEST_CASE("SLI needs both numbers to be at least 2, multi-GPU support only the second number")
{
    struct Case {
        uint32_t First;
        uint32_t Second;
        bool IsSli;
        bool IsMultiGpu;
    };
    for (const auto& [first, second, isSli, isMultiGpu] :
         {Case{2, 2, true, true}, Case{3, 4, true, true}, Case{1, 2, false, true}, Case{2, 1, false, true},
          Case{0, 1, false, true}, Case{2, 0, false, false}, Case{0, 0, false, false}}) {
        CAPTURE(first);
        CAPTURE(second);
        Simulate(MachineWithDriver({{"0xD2D25687", {first, second}}}));
        const NvapiClient client;
        CHECK(client.GetNvidiaSli() == isSli);
        CHECK(client.GetMultiGpuSupport() == isMultiGpu);
    }
}

TEST_CASE("The ECC status is 2 when enabled, 1 when only supported, else 0")
{
    struct Case {
        bool IsSupported;
        bool IsEnabled;
        uint32_t Status;
    };
    for (const auto& [isSupported, isEnabled, status] :
         {Case{false, false, 0}, Case{true, false, 1}, Case{true, true, 2}, Case{false, true, 2}}) {
        Simulate(MachineWith({{"NvAPI_GPU_GetECCStatusInfo", {{"supported", isSupported}, {"enabled", isEnabled}}}}));
        const NvapiClient client;
        CHECK(client.GetEccStatus(client.GetGpuHandle(0)) == status);
    }
}

TEST_CASE("The memory clocks are queried with type 4 and the GPU clocks with type 0, twice each")
{
    Simulate(MachineWith({{"NvAPI_GPU_GetAllClockFrequencies", {{"domain0", 1770000}, {"domain4", 7001000}}}}));
    const NvapiClient client;
    const NvPhysicalGpuHandle gpu = client.GetGpuHandle(0);
    CHECK(client.GetMemoryBoostClock(gpu) == 7001.0F);
    CHECK(client.GetMemoryClockMax(gpu) == 7001.0F);
    CHECK(client.GetGpuBoostClock(gpu) == 1770.0F);
    CHECK(client.GetGpuClockMax(gpu) == 1770.0F);
    const std::string call = "nvapi NvAPI_GPU_GetAllClockFrequencies type=";
    CHECK(Only(Trace(), call) == std::vector<std::string>{call + "4", call + "4", call + "0", call + "0"});
}

TEST_CASE("The second memory call passes the structure that the first one filled")
{
    Simulate(MachineWith({{"NvAPI_GPU_GetMemoryInfoEx", {{"offset32", 17133731840}, {"offset40", 12079595520}}}}));
    const NvapiClient client;
    NvapiMemoryInfo info{};
    CHECK(client.GetMemorySharedSize(client.GetGpuHandle(0), info) == 4248829952U); // 17133731840 - 3 * 2^32
    CHECK(info.CurrentAvailableDedicatedVideoMemory == 12079595520);
    CHECK(info.Version == 0);
    CHECK(client.GetMemorySize(client.GetGpuHandle(0), info) == 3489660928U); // 12079595520 - 2 * 2^32
    CHECK(Only(Trace(), "nvapi NvAPI_GPU_GetMemoryInfoEx").size() == 2);
}

TEST_CASE("Card name and chip name are queried separately, and truncated to 63 characters")
{
    const std::string name(70, 'N');
    Simulate(MachineWith({{"NvAPI_GPU_GetFullName", name}, {"NvAPI_GPU_GetVbiosVersionString", name}}));
    const NvapiClient client;
    const NvPhysicalGpuHandle gpu = client.GetGpuHandle(0);
    CHECK(client.GetCardName(gpu) == name.substr(0, 63));
    CHECK(client.GetChipName(gpu) == name.substr(0, 63));
    CHECK(client.GetBiosVersion(gpu) == name.substr(0, 63));
    CHECK(Only(Trace(), "nvapi NvAPI_GPU_GetFullName").size() == 2);
}
