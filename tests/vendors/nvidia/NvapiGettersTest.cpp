// Every property of a GPU: the value for NVAPI's answer, and the default if NVAPI fails.

#include <functional>

#include <doctest/doctest.h>

#include "support/HostLog.h"
#include "vendors/nvidia/NvapiClient.h"

using namespace orvel::shared::enumeration;
using namespace orvel::tests;

namespace {

struct Reader {
    std::string Name;
    std::function<Json(const NvapiClient&, NvPhysicalGpuHandle)> Read;
};

struct Getter {
    Reader Property;
    std::string Function; ///< of NVAPI
    Json Answer;          ///< of the simulated driver
    Json Value;
    Json Default;
    std::string Message;
};

#define READ(getter) #getter, [](const NvapiClient& client, NvPhysicalGpuHandle gpu) -> Json { return client.getter(gpu); }
#define READ_SYSTEM(getter) #getter, [](const NvapiClient& client, NvPhysicalGpuHandle) -> Json { return client.getter(); }
#define READ_MEMORY(getter)                                                                                                 \
#getter, [](const NvapiClient& client, NvPhysicalGpuHandle gpu) -> Json {                                               \
        NvapiMemoryInfo info{};                                                                                             \
        return client.getter(gpu, info);                                                                                    \
    }

const Json identifiers = {{"device", 0x0A3C10DE}, {"subsystem", 0x00001458}, {"revision", 161}, {"extended", 0x0A3C}};
const Json memory = {{"offset32", 17133731840}, {"offset40", 12079595520}};
const Json clocks = {{"domain0", 1777000}, {"domain4", 7001000}};
const Json eccErrors = {{"single", 4294967299}, {"double", 8589934597}}; // 2^32 + 3, 2 * 2^32 + 5
const std::string clockMessage = "Failed to get GPU clock frequencies. Status code: ";
const std::string eccMessage = "Failed to get GPU ECC error info. Status code: ";

std::vector<Getter> Getters()
{
    return {
        {{READ(GetCardName)},
         "NvAPI_GPU_GetFullName",
         "NVIDIA T4",
         "NVIDIA T4",
         "",
         "Failed to get GPU name. Status code: "},
        {{READ(GetChipName)},
         "NvAPI_GPU_GetFullName",
         "NVIDIA T4",
         "NVIDIA T4",
         "",
         "Failed to get chip name. Status code: "},
        {{READ(GetBusId)}, "NvAPI_GPU_GetBusId", 23, 23, 0, "Failed to get GPU bus ID. Status code: "},
        {{READ(GetBusInterface)},
         "NvAPI_GPU_GetBusType",
         3,
         "PCI Express",
         "",
         "Failed to get bus interface. Status code: "},
        {{READ(GetDeviceId)},
         "NvAPI_GPU_GetPCIIdentifiers",
         identifiers,
         "0a3c",
         "",
         "Failed to get GPU Device ID. Status code: "},
        {{READ(GetSubsystemId)},
         "NvAPI_GPU_GetPCIIdentifiers",
         identifiers,
         "0000-1458",
         "",
         "Failed to get GPU subsystem ID. Status code: "},
        {{READ(GetGpuType)}, "NvAPI_GPU_GetGPUType", 2, "Discrete", "UNKNOWN", "Failed to get GPU type. Status code: "},
        {{READ(GetBiosVersion)},
         "NvAPI_GPU_GetVbiosVersionString",
         "94.06.14.00.5B",
         "94.06.14.00.5B",
         "",
         "Failed to get GPU BIOS version. Status code: "},
        {{READ_SYSTEM(GetNvidiaSli)}, "0xD2D25687", {2, 2}, true, false, "Failed to get NVIDIA SLI status. Status code: "},
        {{READ_SYSTEM(GetMultiGpuSupport)},
         "0xD2D25687",
         {0, 1},
         true,
         false,
         "Failed to get NVIDIA MultiGPU Support. Status code: "},
        {{READ(GetShaders)}, "NvAPI_GPU_GetGpuCoreCount", 3584, 3584, 0, "Failed to get GPU shaders. Status code: "},
        {{READ(GetCores)}, "NvAPI_GPU_GetGpuCoreCount", 3584, 3584, 0, "Failed to get GPU cores. Status code: "},
        {{READ(GetMemoryBusWidth)},
         "NvAPI_GPU_GetRamBusWidth",
         192,
         192,
         0,
         "Failed to get GPU Memory Bus Width. Status code: "},
        {{READ(GetPciLanes)},
         "NvAPI_GPU_GetCurrentPCIEDownstreamWidth",
         16,
         16,
         0,
         "Failed to get GPU PCI lanes. Status code: "},
        {{READ_MEMORY(GetMemorySharedSize)},
         "NvAPI_GPU_GetMemoryInfoEx",
         memory,
         4248829952U,
         0,
         "Failed to get shared memory size. Status code: "},
        {{READ_MEMORY(GetMemorySize)},
         "NvAPI_GPU_GetMemoryInfoEx",
         memory,
         3489660928U,
         0,
         "Failed to get memory size. Status code: "},
        {{READ(GetMemoryBoostClock)}, "NvAPI_GPU_GetAllClockFrequencies", clocks, 7001.0, 0.0, clockMessage},
        {{READ(GetMemoryClockMax)}, "NvAPI_GPU_GetAllClockFrequencies", clocks, 7001.0, 0.0, clockMessage},
        {{READ(GetGpuBoostClock)}, "NvAPI_GPU_GetAllClockFrequencies", clocks, 1777.0, 0.0, clockMessage},
        {{READ(GetGpuClockMax)}, "NvAPI_GPU_GetAllClockFrequencies", clocks, 1777.0, 0.0, clockMessage},
        {{READ(GetEccStatus)},
         "NvAPI_GPU_GetECCStatusInfo",
         {{"supported", true}, {"enabled", true}},
         2,
         0,
         "Failed to get GPU ECC status. Status code: "},
        {{READ(GetEccSingleBitErrors)}, "NvAPI_GPU_GetECCErrorInfo", eccErrors, 3, 0, eccMessage},
        {{READ(GetEccDoubleBitErrors)}, "NvAPI_GPU_GetECCErrorInfo", eccErrors, 5, 0, eccMessage},
    };
}

/// A machine whose driver has this answer for one function; null: the driver lacks the function.
Json MachineWith(const std::string& function, const Json& answer)
{
    Json machine = {{"nvapi", {{"gpus", Json::array({Json::object()})}}}};
    if (!answer.is_null()) {
        Json& place = function == "0xD2D25687" ? machine["nvapi"] : machine["nvapi"]["gpus"][0];
        place[function] = answer;
    }
    return machine;
}

/// Checks that the getter logs this status and returns its default.
void CheckFails(const Getter& getter, const Json& machine, int status)
{
    CAPTURE(getter.Property.Name);
    CAPTURE(status);
    Simulate(machine);
    const NvapiClient client;
    HostLog log;
    CHECK(getter.Property.Read(client, client.GetGpuHandle(0)) == getter.Default);
    CHECK(log.Lines ==
          LogLines{"error NvapiClient::" + getter.Property.Name + ": " + getter.Message + std::to_string(status)});
}

} // namespace

TEST_CASE("Every property of a GPU is NVAPI's value, converted for the record, without a log line")
{
    for (const Getter& getter : Getters()) {
        CAPTURE(getter.Property.Name);
        Simulate(MachineWith(getter.Function, getter.Answer));
        const NvapiClient client;
        HostLog log;
        CHECK(getter.Property.Read(client, client.GetGpuHandle(0)) == getter.Value);
        CHECK(log.Lines.empty());
    }
}

TEST_CASE("If NVAPI fails for a property, its getter logs the status and returns the default")
{
    for (const Getter& getter : Getters()) {
        CheckFails(getter, MachineWith(getter.Function, nullptr), -104);
        CheckFails(getter, MachineWith(getter.Function, {{"status", -1}}), -1);
    }
}

TEST_CASE("The output of a failed NVAPI call is not used")
{
    for (const Getter& getter : Getters()) {
        CheckFails(getter, MachineWith(getter.Function, {{"status", -220}, {"value", getter.Answer}}), -220);
    }
}

TEST_CASE("A function that the driver does not resolve returns -3 without a call")
{
    for (const Getter& getter : Getters()) {
        Json machine = MachineWith(getter.Function, getter.Answer);
        machine["nvapi"]["unresolved"] = Json::array({getter.Function});
        CheckFails(getter, machine, -3);
        CHECK(Only(Trace(), "nvapi " + getter.Function).empty());
    }
}

TEST_CASE("For an invalid GPU handle every getter logs the status and returns its default")
{
    Simulate({{"nvapi", {{"gpus", Json::array({Json::object()})}}}});
    const NvapiClient client;
    HostLog log;
    CHECK(client.GetCardName(nullptr) == "");
    CHECK(log.Lines == LogLines{"error NvapiClient::GetCardName: Failed to get GPU name. Status code: -101"});
}
