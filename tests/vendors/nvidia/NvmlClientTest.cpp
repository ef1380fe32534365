// NVML's session and its devices.

#include "vendors/nvidia/NvmlClient.h"

#include <stdexcept>
#include <type_traits>

#include <doctest/doctest.h>

#include "support/HostLog.h"

using namespace orvel::shared::enumeration;
using namespace orvel::tests;

static_assert(!std::is_copy_constructible_v<NvmlClient> && !std::is_copy_assignable_v<NvmlClient>);

namespace {

const std::string constructor = "NvmlClient::NvmlClient: ";
const std::string destructor = "NvmlClient::~NvmlClient: ";
const std::string initialized = "info " + constructor + "NVML initialized successfully";
const std::string shutDown = "info " + destructor + "NVML shutdown successfully";

Json MachineWith(const std::vector<Json>& devices)
{
    return {{"nvml", {{"devices", devices}}}};
}

/// The highest transfer rate of a link. Checks the log lines.
float TransferRate(uint32_t generation, uint32_t lanes, const LogLines& lines = {})
{
    Simulate(MachineWith({{{"nvmlDeviceGetMaxPcieLinkGeneration", generation}, {"nvmlDeviceGetMaxPcieLinkWidth", lanes}}}));
    const NvmlClient client;
    HostLog log;
    const float rate = client.GetPcieTransferRate(client.GetGpuHandle(0));
    CHECK(log.Lines == lines);
    return rate;
}

std::string SerialNumber(const std::string& serial)
{
    Simulate(MachineWith({{{"nvmlDeviceGetSerial", serial}}}));
    const NvmlClient client;
    return client.GetGraphicCardSerialNumber(client.GetGpuHandle(0));
}

} // namespace

TEST_CASE("A session with NVML gets a handle for every device, and starts and ends with a log line")
{
    Simulate(MachineWith({Json::object(), Json::object()}));
    HostLog log;
    {
        const NvmlClient client;
        CHECK(client.GetGpuHandle(0) != nullptr);
        CHECK(client.GetGpuHandle(1) != nullptr);
        CHECK(client.GetGpuHandle(0) != client.GetGpuHandle(1));
        CHECK(Live()["nvml"] == 1);
    }
    CHECK(log.Lines == LogLines{initialized, shutDown});
    CHECK(Trace() == std::vector<std::string>{"nvml nvmlInit_v2", "nvml nvmlDeviceGetCount_v2",
                                              "nvml nvmlDeviceGetHandleByIndex_v2 0", "nvml nvmlDeviceGetHandleByIndex_v2 1",
                                              "nvml nvmlShutdown"});
    CHECK(Live()["nvml"] == 0);
}

TEST_CASE("If NVML does not start, its status is thrown without a log line, and NVML is not shut down")
{
    HostLog log;
    Simulate(Json::object());
    CHECK_THROWS_WITH_AS(NvmlClient(), "Failed to initialize NVML. Status code: 9", std::runtime_error);
    Simulate({{"nvml", {{"nvmlInit_v2", 4}}}});
    CHECK_THROWS_WITH_AS(NvmlClient(), "Failed to initialize NVML. Status code: 4", std::runtime_error);
    CHECK(log.Lines.empty());
    CHECK(Trace() == std::vector<std::string>{"nvml nvmlInit_v2"});
    CHECK(Live()["nvml"] == 0);
}

TEST_CASE("A failed device count shuts NVML down twice, and the client has no devices")
{
    for (const Json& count : {Json{{"status", 999}}, Json{{"status", 999}, {"value", 1}}}) {
        CAPTURE(count.dump());
        Json machine = MachineWith({Json::object()});
        machine["nvml"]["nvmlDeviceGetCount_v2"] = count;
        Simulate(machine);
        HostLog log;
        {
            const NvmlClient client;
            CHECK(client.GetGpuHandle(0) == nullptr);
        }
        CHECK(log.Lines == LogLines{"error " + constructor + "Failed to get device count: Unknown Error\n",
                                    "info " + constructor + "NVML shutdown successfully", initialized,
                                    "error NvmlClient::GetGpuHandle: Invalid index: 0",
                                    "error " + destructor + "Failed to shutdown NVML. Status code: 1", shutDown});
        CHECK(Trace() == std::vector<std::string>{"nvml nvmlInit_v2", "nvml nvmlDeviceGetCount_v2",
                                                  "nvml nvmlErrorString 999", "nvml nvmlShutdown", "nvml nvmlShutdown"});
        CHECK(Live()["nvml"] == 0);
    }
}

TEST_CASE("An impossible device count is treated as an unknown error")
{
    for (const uint32_t count : {65537U, 4294967295U}) {
        CAPTURE(count);
        Simulate({{"nvml", {{"nvmlDeviceGetCount_v2", count}}}});
        HostLog log;
        {
            const NvmlClient client;
            CHECK(client.GetGpuHandle(0) == nullptr);
        }
        CHECK(log.Lines == LogLines{"error " + constructor + "Failed to get device count: Unknown Error\n",
                                    "info " + constructor + "NVML shutdown successfully", initialized,
                                    "error NvmlClient::GetGpuHandle: Invalid index: 0",
                                    "error " + destructor + "Failed to shutdown NVML. Status code: 1", shutDown});
        CHECK(Live()["nvml"] == 0);
    }
}

TEST_CASE("A failed shutdown after a failed device count throws its status")
{
    Simulate({{"nvml", {{"nvmlDeviceGetCount_v2", {{"status", 15}}}, {"nvmlShutdown", 4}}}});
    HostLog log;
    CHECK_THROWS_WITH_AS(NvmlClient(), "Failed to shutdown NVML. Status code: 4", std::runtime_error);
    CHECK(log.Lines == LogLines{"error " + constructor + "Failed to get device count: GPU is lost\n"});
    CHECK(Only(Trace(), "nvml nvmlShutdown").size() == 1);
}

TEST_CASE("A device whose handle cannot be read is null, and the others are not affected")
{
    Json machine = MachineWith({{{"handle", 15}}, Json::object()});
    machine["nvml"]["nvmlDeviceGetCount_v2"] = 3; // one more than there are devices
    Simulate(machine);
    HostLog log;
    const NvmlClient client;
    CHECK(client.GetGpuHandle(0) == nullptr);
    CHECK(client.GetGpuHandle(1) != nullptr);
    CHECK(client.GetGpuHandle(2) == nullptr);
    CHECK(log.Lines == LogLines{"error " + constructor + "Failed to get handle for device 0: GPU is lost",
                                "error " + constructor + "Failed to get handle for device 2: Invalid Argument",
                                initialized});
}

TEST_CASE("An index that is not below the device count is logged and null")
{
    Simulate(MachineWith({}));
    {
        const NvmlClient client;
        HostLog log;
        CHECK(client.GetGpuHandle(0) == nullptr);
        CHECK(log.Lines == LogLines{"error NvmlClient::GetGpuHandle: Invalid index: 0"});
    }
    Simulate(MachineWith({Json::object()}));
    const NvmlClient client;
    HostLog log;
    CHECK(client.GetGpuHandle(1) == nullptr);
    CHECK(client.GetGpuHandle(4294967295U) == nullptr);
    CHECK(log.Lines == LogLines{"error NvmlClient::GetGpuHandle: Invalid index: 1",
                                "error NvmlClient::GetGpuHandle: Invalid index: 4294967295"});
}

TEST_CASE("A failed shutdown is logged, followed by the line for success")
{
    Json machine = MachineWith({});
    machine["nvml"]["nvmlShutdown"] = 999;
    Simulate(machine);
    HostLog log;
    {
        const NvmlClient client;
    }
    CHECK(log.Lines == LogLines{initialized, "error " + destructor + "Failed to shutdown NVML. Status code: 999", shutDown});
}

TEST_CASE("A failed shutdown without a log is silent")
{
    Simulate({{"nvml", {{"nvmlShutdown", 999}}}});
    const NvmlClient client;
}

TEST_CASE("The transfer rate is the lanes times the generation's rate")
{
    CHECK(TransferRate(1, 16) == 4000.0F);
    CHECK(TransferRate(2, 16) == 8000.0F);
    CHECK(TransferRate(3, 8) == 7880.0F);
    CHECK(TransferRate(4, 16) == 31504.0F);
    CHECK(TransferRate(5, 16) == 63008.0F);
    CHECK(TransferRate(4, 0) == 0.0F);
}

TEST_CASE("A PCI Express generation without a rate is logged, and its transfer rate is 0")
{
    const std::string line = "error NvmlClient::GetPcieTransferRate: Unsupported PCIe generation: ";
    CHECK(TransferRate(6, 16, {line + "6"}) == 0.0F);
    CHECK(TransferRate(0, 16, {line + "0"}) == 0.0F);
}

TEST_CASE("The generation is the link's current one, the transfer rate the highest possible")
{
    Simulate(MachineWith({{{"nvmlDeviceGetCurrPcieLinkGeneration", 1},
                           {"nvmlDeviceGetMaxPcieLinkGeneration", 4},
                           {"nvmlDeviceGetMaxPcieLinkWidth", 16}}}));
    const NvmlClient client;
    CHECK(client.GetPcieGeneration(client.GetGpuHandle(0)) == 1.0F);
    CHECK(client.GetPcieTransferRate(client.GetGpuHandle(0)) == 31504.0F);
}

TEST_CASE("Each temperature is a separate threshold")
{
    Simulate(MachineWith({{{"nvmlDeviceGetTemperatureThreshold", {{"0", 98}, {"1", {{"status", 3}}}, {"3", 93}}}}}));
    const NvmlClient client;
    const nvmlDevice_t device = client.GetGpuHandle(0);
    CHECK(client.GetTemperatureShutdown(device) == 98);
    CHECK(client.GetTemperatureSlowdown(device) == 0);
    CHECK(client.GetMaxTemperature(device) == 93);
    const std::string call = "nvml nvmlDeviceGetTemperatureThreshold ";
    CHECK(Only(Trace(), call) == std::vector<std::string>{call + "0", call + "1", call + "3"});
}

TEST_CASE("A serial number of 29 characters fits, a longer one fails")
{
    CHECK(SerialNumber(std::string(29, '7')) == std::string(29, '7'));
    CHECK(SerialNumber("") == "");
    HostLog log;
    CHECK(SerialNumber(std::string(30, '7')) == "Unknown");
    CHECK(log.Lines == LogLines{initialized,
                                "error NvmlClient::GetGraphicCardSerialNumber: Failed to get graphics card serial number: "
                                "Insufficient Size",
                                shutDown});
}
