// Every property of a device: the value for NVML's answer, and the default if NVML fails.

#include <functional>

#include <doctest/doctest.h>

#include "support/HostLog.h"
#include "vendors/nvidia/NvmlClient.h"

using namespace orvel::shared::enumeration;
using namespace orvel::tests;

namespace {

struct Reader {
    std::string Name;
    std::function<Json(const NvmlClient&, nvmlDevice_t)> Read;
};

#define READ(getter)                                                                                                        \
    Reader                                                                                                                  \
    {                                                                                                                       \
#getter, [](const NvmlClient& client, nvmlDevice_t device) -> Json { return client.getter(device); }                \
    }

/// One call of a getter, and the log line if this call fails.
struct Call {
    Reader Property;
    std::string Function;
    Json Value; ///< the property of the healthy device
    Json Default;
    std::string Message;
    std::string End = ""; ///< the end of the log line, after NVML's text
};

const std::vector<Call> calls = {
    {READ(GetGraphicCardSerialNumber), "nvmlDeviceGetSerial", "1324521012345", "Unknown",
     "Failed to get graphics card serial number: "},
    {READ(GetCudaCapability), "nvmlDeviceGetCudaComputeCapability", 8.9F, 0.0, "Failed to get CUDA compute capability: "},
    {READ(GetMaxTemperature), "nvmlDeviceGetTemperatureThreshold", 93, 0, "Failed to get max temperature: "},
    {READ(GetTemperatureSlowdown), "nvmlDeviceGetTemperatureThreshold", 95, 0, "Failed to get temperature slowdown: "},
    {READ(GetTemperatureShutdown), "nvmlDeviceGetTemperatureThreshold", 98, 0, "Failed to get temperature shutdown: "},
    {READ(GetPcieGeneration), "nvmlDeviceGetCurrPcieLinkGeneration", 3.0, 0.0, "Failed to get PCIe generation: ", "\n"},
    {READ(GetPcieTransferRate), "nvmlDeviceGetMaxPcieLinkGeneration", 31504.0, 0.0, "Failed to get PCIe link generation: "},
    {READ(GetPcieTransferRate), "nvmlDeviceGetMaxPcieLinkWidth", 31504.0, 0.0, "Failed to get PCIe link width: "},
    {READ(GetMemoryBandwidth), "nvmlDeviceGetClockInfo", 593.8125, 0.0, "Failed to get memory clock speed: "},
    {READ(GetMemoryBandwidth), "nvmlDeviceGetMemoryBusWidth", 593.8125, 0.0, "Failed to get memory bus width: "},
};

Json HealthyDevice()
{
    return {{"nvmlDeviceGetSerial", "1324521012345"},
            {"nvmlDeviceGetCudaComputeCapability", {8, 9}},
            {"nvmlDeviceGetTemperatureThreshold", {{"0", 98}, {"1", 95}, {"3", 93}}},
            {"nvmlDeviceGetClockInfo", {{"2", 9501}}},
            {"nvmlDeviceGetCurrPcieLinkGeneration", 3},
            {"nvmlDeviceGetMaxPcieLinkGeneration", 4},
            {"nvmlDeviceGetMaxPcieLinkWidth", 16},
            {"nvmlDeviceGetMemoryBusWidth", 256}};
}

/// Checks that the getter logs NVML's text under its own name and returns its default.
void CheckFails(const Call& call, const Json& device, const std::string& text)
{
    CAPTURE(call.Function);
    Simulate({{"nvml", {{"devices", Json::array({device})}}}});
    const NvmlClient client;
    HostLog log;
    CHECK(call.Property.Read(client, client.GetGpuHandle(0)) == call.Default);
    CHECK(log.Lines == LogLines{"error NvmlClient::" + call.Property.Name + ": " + call.Message + text + call.End});
}

/// The healthy device with another answer for one function.
Json DeviceWith(const std::string& function, const Json& answer)
{
    Json device = HealthyDevice();
    device[function] = answer;
    return device;
}

} // namespace

TEST_CASE("Every property of a device is NVML's value, converted for the record, without a log line")
{
    Simulate({{"nvml", {{"devices", Json::array({HealthyDevice()})}}}});
    const NvmlClient client;
    HostLog log;
    for (const Call& call : calls) {
        CAPTURE(call.Function);
        CHECK(call.Property.Read(client, client.GetGpuHandle(0)) == call.Value);
    }
    CHECK(log.Lines.empty());
}

TEST_CASE("If NVML fails for a property, its getter logs NVML's text and returns the default")
{
    for (const Call& call : calls) {
        Json device = HealthyDevice();
        device.erase(call.Function);
        CheckFails(call, device, "Not Supported");
        CheckFails(call, DeviceWith(call.Function, {{"status", 15}}), "GPU is lost");
        CheckFails(call, DeviceWith(call.Function, {{"status", 12345}}), "Unknown Error");
    }
}

TEST_CASE("The output of a failed NVML call is not used")
{
    for (const Call& call : calls) {
        const Json answer = HealthyDevice()[call.Function];
        CheckFails(call, DeviceWith(call.Function, {{"status", 4}, {"value", answer}}), "Insufficient Permissions");
    }
}

TEST_CASE("For a device without a handle every property has its default")
{
    for (const Call& call : calls) {
        const bool isFirstCall =
            call.Function != "nvmlDeviceGetMaxPcieLinkWidth" && call.Function != "nvmlDeviceGetMemoryBusWidth";
        if (isFirstCall) {
            CAPTURE(call.Function);
            Simulate({{"nvml", {{"devices", Json::array({HealthyDevice()})}}}});
            const NvmlClient client;
            HostLog log;
            CHECK(call.Property.Read(client, nullptr) == call.Default);
            CHECK(log.Lines ==
                  LogLines{"error NvmlClient::" + call.Property.Name + ": " + call.Message + "Invalid Argument" + call.End});
        }
    }
}
