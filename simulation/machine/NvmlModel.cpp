#include "machine/NvmlModel.h"

#include <charconv>

namespace orvel::simulation {

namespace {

constexpr int32_t highestArgument = 7; // of NVML's numbers for thresholds and clocks

const std::vector<std::string> functions = {
    "nvmlInit_v2",
    "nvmlShutdown",
    "nvmlErrorString",
    "nvmlDeviceGetCount_v2",
    "nvmlDeviceGetHandleByIndex_v2",
    "nvmlDeviceGetSerial",
    "nvmlDeviceGetCudaComputeCapability",
    "nvmlDeviceGetTemperatureThreshold",
    "nvmlDeviceGetCurrPcieLinkGeneration",
    "nvmlDeviceGetMaxPcieLinkGeneration",
    "nvmlDeviceGetMaxPcieLinkWidth",
    "nvmlDeviceGetClockInfo",
    "nvmlDeviceGetMemoryBusWidth",
    "nvmlSystemGetDriverVersion",
    "nvmlDeviceGetPciInfo_v3",
    "nvmlDeviceGetMemoryInfo",
    "nvmlDeviceGetUUID",
    "nvmlDeviceGetVbiosVersion",
    "nvmlDeviceGetMaxClockInfo",
    "nvmlDeviceGetNumGpuCores",
    "nvmlDeviceGetCurrPcieLinkWidth",
    "nvmlDeviceGetGpuMaxPcieLinkGeneration",
    "nvmlDeviceGetEccMode",
    "nvmlDeviceGetTotalEccErrors",
};

} // namespace

static void ReadInto(const Node& node, std::array<int32_t, 2>& target)
{
    ReadInto(node, target, "expected two numbers");
}

static void ReadInto(const Node& node, NvmlPciInfo& target)
{
    node.ReadFields({
        {"domain", Into(target.domain)},
        {"bus", Into(target.bus)},
        {"device", Into(target.device)},
        {"pciDeviceId", Into(target.pciDeviceId)},
        {"pciSubSystemId", Into(target.pciSubSystemId)},
    });
}

static void ReadInto(const Node& node, NvmlMemory& target)
{
    node.ReadFields({
        {"total", Into(target.total)},
        {"free", Into(target.free)},
        {"used", Into(target.used)},
    });
}

/// The keys are "TYPE,COUNTER".
static void ReadInto(const Node& node, NvmlCounters& target)
{
    Fields fields;
    for (int32_t type = 0; type <= 1; ++type) {
        for (int32_t counter = 0; counter <= 1; ++counter) {
            fields.emplace_back(std::to_string(type) + "," + std::to_string(counter),
                                [&target, type, counter](const Node& answer) {
                                    ReadInto(answer, target[{type, counter}]);
                                });
        }
    }
    node.ReadFields(fields);
}

static void ReadInto(const Node& node, NvmlAnswers& target)
{
    Fields fields;
    for (int32_t argument = 0; argument <= highestArgument; ++argument) {
        fields.emplace_back(std::to_string(argument),
                            [&target, argument](const Node& answer) { ReadInto(answer, target[argument]); });
    }
    node.ReadFields(fields);
}

/// Status as text → NVML's text for it.
static void ReadErrorTexts(const Node& node, std::map<int32_t, std::string>& target)
{
    for (const auto& [key, text] : node.Members()) {
        int32_t status = 0;
        const char* const end = key.data() + key.size();
        const auto [stop, error] = std::from_chars(key.data(), end, status);
        if (error != std::errc() || stop != end) {
            text.Refuse("expected a status such as \"3\", found \"" + key + "\"");
        }
        ReadInto(text, target[status]);
    }
}

void ReadInto(const Node& node, NvmlDeviceModel& target)
{
    node.ReadFields({
        {"handle", Into(target.handle)},
        {"nvmlDeviceGetSerial", Into(target.serial)},
        {"nvmlDeviceGetCudaComputeCapability", Into(target.cudaComputeCapability)},
        {"nvmlDeviceGetTemperatureThreshold", Into(target.temperatureThreshold)},
        {"nvmlDeviceGetClockInfo", Into(target.clockInfo)},
        {"nvmlDeviceGetCurrPcieLinkGeneration", Into(target.currentPcieGeneration)},
        {"nvmlDeviceGetMaxPcieLinkGeneration", Into(target.maximumPcieGeneration)},
        {"nvmlDeviceGetMaxPcieLinkWidth", Into(target.maximumPcieWidth)},
        {"nvmlDeviceGetMemoryBusWidth", Into(target.memoryBusWidth)},
        {"nvmlDeviceGetPciInfo_v3", Into(target.pciInfo)},
        {"nvmlDeviceGetMemoryInfo", Into(target.memoryInfo)},
        {"nvmlDeviceGetUUID", Into(target.uuid)},
        {"nvmlDeviceGetVbiosVersion", Into(target.vbiosVersion)},
        {"nvmlDeviceGetMaxClockInfo", Into(target.maxClockInfo)},
        {"nvmlDeviceGetNumGpuCores", Into(target.numGpuCores)},
        {"nvmlDeviceGetCurrPcieLinkWidth", Into(target.currentPcieWidth)},
        {"nvmlDeviceGetGpuMaxPcieLinkGeneration", Into(target.gpuMaximumPcieGeneration)},
        {"nvmlDeviceGetEccMode", Into(target.eccMode)},
        {"nvmlDeviceGetTotalEccErrors", Into(target.totalEccErrors)},
    });
}

void ReadInto(const Node& node, NvmlModel& target)
{
    node.ReadFields({
        {"missing", NamesInto(target.missing, functions)},
        {"nvmlInit_v2", Into(target.init)},
        {"nvmlShutdown", Into(target.shutdown)},
        {"nvmlSystemGetDriverVersion", Into(target.driverVersion)},
        {"nvmlDeviceGetCount_v2", Into(target.deviceCount)},
        {"nvmlErrorString", [&target](const Node& texts) { ReadErrorTexts(texts, target.errorTexts); }},
        {"devices", Into(target.devices)},
    });
}

} // namespace orvel::simulation
