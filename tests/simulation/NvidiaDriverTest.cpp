// The simulated NVAPI and NVML with a caller that breaks their rules, and with a machine file that makes them misbehave.

#include <array>
#include <cstring>

#include <doctest/doctest.h>

#include "Drivers.h"

using namespace orvel::tests;

namespace {

constexpr uint32_t initialize = 0x0150E828;
constexpr uint32_t unload = 0xD22BDD7E;
constexpr uint32_t enumPhysicalGpus = 0xE5AC921F;
constexpr uint32_t getFullName = 0xCEEE8E9F;
constexpr uint32_t getBusId = 0x1BE0B8E5;
constexpr uint32_t getClocks = 0xDCB616C3;
constexpr uint32_t getEccStatus = 0xCA1DDAF3;
constexpr uint32_t getEccErrors = 0xC71F85A6;
constexpr uint32_t getMemoryInfo = 0xC0599498;
constexpr uint32_t getMultiGpu = 0xD2D25687;
constexpr uint32_t enumTccPhysicalGpus = 0xD9930B07;
constexpr uint32_t getCoreCount = 0xC7026A87;
constexpr uint32_t getLogicalGpu = 0xADD604D1;
constexpr uint32_t getLogicalGpuInfo = 0x842B066E;

constexpr uint32_t rubbish = 0x5A5A5A5A;

class Nvapi {
public:
    template <typename... Arguments>
    int32_t operator()(uint32_t id, Arguments... arguments) const
    {
        const auto find = reinterpret_cast<void* (*)(uint32_t)>(driver.Find("nvapi_QueryInterface"));
        return reinterpret_cast<int32_t (*)(Arguments...)>(find(id))(arguments...);
    }

    /// The first GPU of a new session.
    void* Begin() const
    {
        REQUIRE((*this)(initialize) == 0);
        std::array<void*, 64> handles{};
        uint32_t count = 0;
        REQUIRE((*this)(enumPhysicalGpus, handles.data(), &count) == 0);
        return handles.front();
    }

private:
    Driver driver{L"nvapi64.dll"};
};

Json MachineWith(const Json& gpu)
{
    return {{"nvapi", {{"gpus", Json::array({gpu})}}}};
}

using Clocks = std::array<uint32_t, 66>; // 264 bytes

Clocks ClocksOfType(uint32_t type)
{
    Clocks clocks{};
    clocks[0] = 0x00030108;
    clocks[1] = type;
    return clocks;
}

Json MachineWithDevice(const Json& device)
{
    return {{"nvml", {{"devices", Json::array({device})}}}};
}

void* FirstDevice(const Driver& nvml)
{
    REQUIRE(nvml.Call("nvmlInit_v2") == 0);
    void* device = nullptr;
    REQUIRE(nvml.Call("nvmlDeviceGetHandleByIndex_v2", 0U, &device) == 0);
    return device;
}

} // namespace

TEST_CASE("NVAPI returns -4 outside a session, and the call is a violation")
{
    Simulate(MachineWith({{"NvAPI_GPU_GetBusId", 1}}));
    const Nvapi nvapi;
    int32_t bus = 0;
    CHECK(nvapi(getBusId, nullptr, &bus) == -4);
    CHECK(TakeViolations() == Violations{"nvapi NvAPI_GPU_GetBusId: NVAPI is not initialised"});
    void* const gpu = nvapi.Begin();
    CHECK(nvapi(getBusId, gpu, &bus) == 0);
    CHECK(nvapi(unload) == 0);
    CHECK(TakeViolations().empty());
    CHECK(nvapi(getBusId, gpu, &bus) == -4);
    CHECK(nvapi(unload) == -4);
    CHECK(TakeViolations().size() == 2);
}

TEST_CASE("A GPU's handle becomes invalid with its session")
{
    Simulate(MachineWith({{"NvAPI_GPU_GetBusId", 1}}));
    const Nvapi nvapi;
    void* const former = nvapi.Begin();
    nvapi(unload);
    void* const gpu = nvapi.Begin();
    int32_t bus = 0;
    CHECK(nvapi(getBusId, former, &bus) == -101);
    CHECK(TakeViolations() == Violations{"nvapi NvAPI_GPU_GetBusId: the handle is not of this session"});
    CHECK(nvapi(getBusId, gpu, &bus) == 0);
    CHECK(nvapi(getBusId, nullptr, &bus) == -101); // the content of an array element without a GPU
}

TEST_CASE("NVAPI without a GPU returns -6, unless the file states the result")
{
    const auto answer = [](const Json& machine) {
        Simulate({{"nvapi", machine}});
        const Nvapi nvapi;
        nvapi(initialize);
        std::array<void*, 64> handles{};
        uint32_t count = 7;
        return std::pair(nvapi(enumPhysicalGpus, handles.data(), &count), count);
    };
    CHECK(answer(Json::object()) == std::pair(-6, 7U));
    CHECK(answer({{"NvAPI_EnumPhysicalGPUs", 0}}) == std::pair(0, 0U));
}

TEST_CASE("NVAPI reports a null pointer, a wrong version and reserved bits")
{
    Simulate(MachineWith({{"NvAPI_GPU_GetBusId", 1},
                          {"NvAPI_GPU_GetECCStatusInfo", {{"supported", true}, {"enabled", true}}},
                          {"NvAPI_GPU_GetAllClockFrequencies", {{"domain0", 1}}}}));
    const Nvapi nvapi;
    void* const gpu = nvapi.Begin();
    CHECK(nvapi(getBusId, gpu, nullptr) == -5);
    std::array<uint32_t, 4> ecc{0x00010014, 0, 0, 0};
    CHECK(nvapi(getEccStatus, gpu, ecc.data()) == -9);
    ecc = {0x00010010, 2, 0, 0};
    CHECK(nvapi(getEccStatus, gpu, ecc.data()) == -5);
    Clocks clocks = ClocksOfType(0x10);
    CHECK(nvapi(getClocks, gpu, clocks.data()) == -5);
    std::array<uint32_t, 7> caps{};
    CHECK(nvapi(getMultiGpu, caps.data()) == -9);
    CHECK(TakeViolations() == Violations{"nvapi NvAPI_GPU_GetBusId: a null pointer",
                                         "nvapi NvAPI_GPU_GetECCStatusInfo: the structure's version is wrong",
                                         "nvapi NvAPI_GPU_GetECCStatusInfo: reserved bits are not 0",
                                         "nvapi NvAPI_GPU_GetAllClockFrequencies type=0: reserved bits are not 0",
                                         "nvapi 0xD2D25687: the structure's version is wrong"});
}

TEST_CASE("NVAPI writes complete structures: values that the file does not state are garbage")
{
    Json machine = MachineWith({{"NvAPI_GPU_GetECCStatusInfo", {{"supported", true}, {"enabled", false}}},
                                {"NvAPI_GPU_GetECCErrorInfo", {{"single", 3}, {"double", 5}}},
                                {"NvAPI_GPU_GetAllClockFrequencies", {{"domain4", 7001000}}}});
    machine["nvapi"]["0xD2D25687"] = {2, 0xFFFFFFFF};
    Simulate(machine);
    const Nvapi nvapi;
    void* const gpu = nvapi.Begin();
    std::array<uint32_t, 4> ecc{0x00010010, 0, 0, 0};
    CHECK(nvapi(getEccStatus, gpu, ecc.data()) == 0);
    CHECK(ecc == std::array<uint32_t, 4>{0x00010010, rubbish | 1, rubbish, rubbish & ~1U});
    std::array<uint32_t, 10> errors{0x00010028};
    CHECK(nvapi(getEccErrors, gpu, errors.data()) == 0);
    CHECK(errors == std::array<uint32_t, 10>{0x00010028, rubbish, 3, 0, 5, 0, rubbish, rubbish, rubbish, rubbish});
    Clocks clocks = ClocksOfType(4);
    CHECK(nvapi(getClocks, gpu, clocks.data()) == 0);
    Clocks expected;
    for (size_t domain = 0; domain < 32; ++domain) {
        expected[2 + 2 * domain] = 0;
        expected[3 + 2 * domain] = rubbish;
    }
    expected[0] = 0x00030108;
    expected[1] = 4;
    expected[3] = 0; // the file can list this domain, but omits it
    expected[10] = 1;
    expected[11] = 7001000;
    CHECK(clocks == expected);
    std::array<uint32_t, 7> caps{0, 0x0002001C};
    CHECK(nvapi(getMultiGpu, caps.data()) == 0);
    CHECK(caps == std::array<uint32_t, 7>{rubbish, 0x0002001C, 2, 0xFFFFFFFF, rubbish, rubbish, rubbish});
}

TEST_CASE("An ECC word can be stated as a whole")
{
    Simulate(MachineWith({{"NvAPI_GPU_GetECCStatusInfo", {{"supported", "0xFFFFFFFF"}, {"enabled", 2}}}}));
    const Nvapi nvapi;
    std::array<uint32_t, 4> ecc{0x00010010, 0, 0, 0};
    CHECK(nvapi(getEccStatus, nvapi.Begin(), ecc.data()) == 0);
    CHECK(ecc == std::array<uint32_t, 4>{0x00010010, 0xFFFFFFFF, rubbish, 2});
}

TEST_CASE("Clock frequencies can be stated by clock type, and presence separately from frequency")
{
    Simulate(MachineWith({{"NvAPI_GPU_GetAllClockFrequencies",
                           {{"0", {{"domain0", 1777000}}},
                            {"2", {{"status", -1}}},
                            {"4", {{"domain4", {{"present", false}, {"kHz", 7501000}}}}}}}}));
    const Nvapi nvapi;
    void* const gpu = nvapi.Begin();
    Clocks clocks = ClocksOfType(0);
    CHECK(nvapi(getClocks, gpu, clocks.data()) == 0);
    CHECK(clocks[2] == 1);
    CHECK(clocks[3] == 1777000);
    clocks = ClocksOfType(4);
    CHECK(nvapi(getClocks, gpu, clocks.data()) == 0);
    CHECK(clocks[10] == 0);
    CHECK(clocks[11] == 7501000);
    clocks = ClocksOfType(2);
    CHECK(nvapi(getClocks, gpu, clocks.data()) == -1);
    clocks = ClocksOfType(1);
    CHECK(nvapi(getClocks, gpu, clocks.data()) == -5);
}

TEST_CASE("An NVAPI text has garbage after its terminator; the file can omit the terminator")
{
    const auto textOf = [](const Json& answer) {
        Simulate(MachineWith({{"NvAPI_GPU_GetFullName", answer}}));
        const Nvapi nvapi;
        std::string text(64, '\0');
        const int32_t status = nvapi(getFullName, nvapi.Begin(), text.data());
        return std::pair(status, text);
    };
    CHECK(textOf("Card") == std::pair(0, std::string("Card\0", 5) + std::string(59, 'Z')));
    CHECK(textOf({{"status", 0}, {"value", "Card"}, {"writes", "unterminated"}}) ==
          std::pair(0, "Card" + std::string(60, 'Z')));
    CHECK(textOf({{"status", -1}, {"writes", "rubbish"}}) == std::pair(-1, std::string(64, 'Z')));
    CHECK(textOf({{"status", 0}, {"value", "Card"}, {"writes", "nothing"}}) == std::pair(0, std::string(64, '\0')));
}

TEST_CASE("A failing GPU list can write garbage, and a successful one nothing")
{
    const auto firstHandle = [](const Json& answer) {
        Json machine = MachineWith(Json::object());
        machine["nvapi"]["NvAPI_EnumPhysicalGPUs"] = answer;
        Simulate(machine);
        const Nvapi nvapi;
        nvapi(initialize);
        std::array<uint64_t, 64> handles{};
        uint32_t count = 7;
        const int32_t status = nvapi(enumPhysicalGpus, handles.data(), &count);
        return std::tuple(status, count, handles[0]);
    };
    CHECK(firstHandle({{"status", -1}, {"writes", "rubbish"}}) == std::tuple(-1, rubbish, 0x5A5A5A5A5A5A5A5AU));
    CHECK(firstHandle({{"status", 0}, {"writes", "nothing"}}) == std::tuple(0, 7U, 0U));
}

TEST_CASE("NVAPI's sessions are counted: the handles are valid until the last one ends")
{
    Simulate(MachineWith({{"NvAPI_GPU_GetBusId", 1}}));
    const Nvapi nvapi;
    void* const gpu = nvapi.Begin();
    CHECK(nvapi.Begin() == gpu);
    CHECK(Live()["nvapi"] == 2);
    CHECK(nvapi(unload) == 0);
    int32_t bus = 0;
    CHECK(nvapi(getBusId, gpu, &bus) == 0);
    CHECK(bus == 1);
    CHECK(nvapi(unload) == 0);
    CHECK(Live()["nvapi"] == 0);
}

TEST_CASE("An NVAPI function that the file leaves unresolved, or that does not exist, is null")
{
    Simulate({{"nvapi", {{"unresolved", {"NvAPI_GPU_GetBusId"}}}}});
    const Driver driver(L"nvapi64.dll");
    const auto find = reinterpret_cast<void* (*)(uint32_t)>(driver.Find("nvapi_QueryInterface"));
    CHECK_FALSE(find(getBusId));
    CHECK_FALSE(find(0x12345678));
    CHECK(find(getFullName));
}

TEST_CASE("NVAPI accepts a memory structure that is zeroed, or that it filled last")
{
    Simulate(MachineWith({{"NvAPI_GPU_GetMemoryInfoEx", {{"offset32", 4}}}}));
    const Nvapi nvapi;
    void* const gpu = nvapi.Begin();
    std::array<uint64_t, 10> memory{};
    CHECK(nvapi(getMemoryInfo, gpu, memory.data()) == 0);
    CHECK(memory[4] == 4);
    CHECK(nvapi(getMemoryInfo, gpu, memory.data()) == 0);
    memory[9] = 0;
    CHECK(nvapi(getMemoryInfo, gpu, memory.data()) == -9);
    CHECK(nvapi(getMemoryInfo, gpu, nullptr) == -5);
    CHECK(TakeViolations() == Violations{"nvapi NvAPI_GPU_GetMemoryInfoEx: the structure's version is wrong",
                                         "nvapi NvAPI_GPU_GetMemoryInfoEx: a null pointer"});
}

TEST_CASE("NVAPI lists a GPU that only computes apart, and refuses it where a display's is meant")
{
    Simulate(MachineWith({{"tcc", true}, {"NvAPI_GPU_GetBusId", 7}, {"NvAPI_GPU_GetGpuCoreCount", 8192}}));
    const Nvapi nvapi;
    REQUIRE(nvapi(initialize) == 0);
    std::array<void*, 64> handles{};
    uint32_t count = 0, number = 0;
    CHECK(nvapi(enumPhysicalGpus, handles.data(), &count) == -6);
    CHECK(nvapi(enumTccPhysicalGpus, handles.data(), &count) == 0);
    CHECK(count == 1);
    CHECK(nvapi(getBusId, handles[0], &number) == 0);
    CHECK(number == 7);
    CHECK(nvapi(getCoreCount, handles[0], &number) == -8);
    CHECK(nvapi(unload) == 0);
}

TEST_CASE("NVAPI writes a logical GPU's LUID to where the structure points, and checks the version")
{
    Simulate(MachineWith({{"NvAPI_GPU_GetLogicalGpuInfo", {{"luid", "0x100000007"}, {"physicalGpuCount", 2}}}}));
    const Nvapi nvapi;
    void* const gpu = nvapi.Begin();
    void* logical = nullptr;
    REQUIRE(nvapi(getLogicalGpu, gpu, &logical) == 0);
    uint64_t luid = 0;
    std::array<uint64_t, 71> info{}; // 568 bytes
    uint64_t* const target = &luid;
    std::memcpy(&info[1], &target, sizeof target);
    CHECK(nvapi(getLogicalGpuInfo, logical, info.data()) == -9); // without a version word
    info[0] = 0x00010238;
    CHECK(nvapi(getLogicalGpuInfo, gpu, info.data()) == -100);
    CHECK(TakeViolations().size() == 2);
    CHECK(nvapi(getLogicalGpuInfo, logical, info.data()) == 0);
    CHECK(luid == 0x1'0000'0007);
    CHECK((info[2] & 0xFFFFFFFF) == 2);
    CHECK(nvapi(unload) == 0);
}

TEST_CASE("NVML's initialisations are counted; the last shutdown ends the session")
{
    Simulate(MachineWithDevice({{"nvmlDeviceGetMemoryBusWidth", 192}}));
    const Driver nvml(L"nvml.dll");
    CHECK(nvml.Call("nvmlShutdown") == 1);
    void* const device = FirstDevice(nvml);
    CHECK(nvml.Call("nvmlInit_v2") == 0);
    CHECK(nvml.Call("nvmlShutdown") == 0);
    uint32_t bits = 0;
    CHECK(nvml.Call("nvmlDeviceGetMemoryBusWidth", device, &bits) == 0);
    CHECK(nvml.Call("nvmlShutdown") == 0);
    CHECK(Live()["nvml"] == 0);
}

TEST_CASE("NVML rejects null, an unknown device, and a buffer that is too small")
{
    Simulate(MachineWithDevice({{"nvmlDeviceGetSerial", "1234"}, {"nvmlDeviceGetCudaComputeCapability", {8, 6}}}));
    const Driver nvml(L"nvml.dll");
    uint32_t count = 7;
    CHECK(nvml.Call("nvmlDeviceGetCount_v2", &count) == 1);
    void* const device = FirstDevice(nvml);
    CHECK(nvml.Call("nvmlDeviceGetCount_v2", &count) == 0);
    CHECK(count == 1);
    void* none = nullptr;
    CHECK(nvml.Call("nvmlDeviceGetHandleByIndex_v2", 1U, &none) == 2);
    std::string serial(5, '\0');
    CHECK(nvml.Call("nvmlDeviceGetSerial", device, serial.data(), 4U) == 7);
    CHECK(nvml.Call("nvmlDeviceGetSerial", device, serial.data(), 5U) == 0);
    CHECK(serial == std::string("1234\0", 5));
    CHECK(TakeViolations().empty());
    int32_t major = 0;
    CHECK(nvml.Call("nvmlDeviceGetCount_v2", nullptr) == 2);
    CHECK(nvml.Call("nvmlDeviceGetHandleByIndex_v2", 0U, nullptr) == 2);
    CHECK(nvml.Call("nvmlDeviceGetCudaComputeCapability", device, &major, nullptr) == 2);
    CHECK(TakeViolations() == Violations{"nvml nvmlDeviceGetCount_v2: a null pointer",
                                         "nvml nvmlDeviceGetHandleByIndex_v2 0: a null pointer",
                                         "nvml nvmlDeviceGetCudaComputeCapability: a null pointer"});
}

TEST_CASE("NVML has a text for every status, known or not")
{
    Simulate(MachineWithDevice(Json::object()));
    const Driver nvml(L"nvml.dll");
    const auto textOf = reinterpret_cast<const char* (*)(int32_t)>(nvml.Find("nvmlErrorString"));
    CHECK(std::string(textOf(15)) == "GPU is lost");
    CHECK(std::string(textOf(12345)) == "Unknown Error");
}

TEST_CASE("Without a driver nvml.dll exists and reports that no driver is loaded")
{
    Simulate(Json::object());
    const Driver nvml(L"nvml.dll");
    CHECK(nvml.Call("nvmlInit_v2") == 9);
}

TEST_CASE("NVML returns 1 outside a session, also for a null handle, and 2 for a null handle in a session")
{
    Simulate(MachineWithDevice({{"nvmlDeviceGetMemoryBusWidth", 192}}));
    const Driver nvml(L"nvml.dll");
    uint32_t bits = 0;
    CHECK(nvml.Call("nvmlDeviceGetMemoryBusWidth", nullptr, &bits) == 1);
    void* const device = FirstDevice(nvml);
    CHECK(nvml.Call("nvmlDeviceGetMemoryBusWidth", nullptr, &bits) == 2);
    CHECK(nvml.Call("nvmlDeviceGetMemoryBusWidth", device, &bits) == 0);
    CHECK(nvml.Call("nvmlShutdown") == 0);
    CHECK(TakeViolations().empty());
    CHECK(nvml.Call("nvmlDeviceGetMemoryBusWidth", device, &bits) == 1);
    CHECK(FirstDevice(nvml) != device);
    CHECK(nvml.Call("nvmlDeviceGetMemoryBusWidth", device, &bits) == 2);
    CHECK(TakeViolations() == Violations(2, "nvml nvmlDeviceGetMemoryBusWidth: the handle is not of this session"));
    CHECK(nvml.Call("nvmlDeviceGetMemoryBusWidth", FirstDevice(nvml), nullptr) == 2);
    CHECK(TakeViolations() == Violations{"nvml nvmlDeviceGetMemoryBusWidth: a null pointer"});
}

TEST_CASE("NVML can misbehave: a serial number without terminator, and garbage from a failing call")
{
    Simulate(MachineWithDevice({{"nvmlDeviceGetSerial", {{"status", 0}, {"value", "123"}, {"writes", "unterminated"}}},
                                {"nvmlDeviceGetMemoryBusWidth", {{"status", 15}, {"writes", "rubbish"}}},
                                {"nvmlDeviceGetTemperatureThreshold", {{"3", {{"status", 15}, {"writes", "rubbish"}}}}}}));
    const Driver nvml(L"nvml.dll");
    void* const device = FirstDevice(nvml);
    std::string serial(30, '\0');
    CHECK(nvml.Call("nvmlDeviceGetSerial", device, serial.data(), 30U) == 0);
    CHECK(serial == "123" + std::string(27, 'Z'));
    uint32_t number = 0;
    CHECK(nvml.Call("nvmlDeviceGetMemoryBusWidth", device, &number) == 15);
    CHECK(number == rubbish);
    number = 0;
    CHECK(nvml.Call("nvmlDeviceGetTemperatureThreshold", device, 3, &number) == 15);
    CHECK(number == rubbish);
}

TEST_CASE("A function of NVML that the file names as missing is not found")
{
    Simulate({{"nvml", {{"missing", {"nvmlDeviceGetMemoryBusWidth"}}}}});
    const Driver nvml(L"nvml.dll");
    CHECK_FALSE(nvml.Find("nvmlDeviceGetMemoryBusWidth"));
    CHECK(nvml.Find("nvmlDeviceGetMaxPcieLinkWidth"));
    Simulate({{"nvml", Json::object()}});
    CHECK(nvml.Find("nvmlDeviceGetMemoryBusWidth"));
}
