#include "machine/NvmlModel.h"

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
};

} // namespace

static void ReadInto(const Node& node, std::array<int32_t, 2>& target)
{
    ReadInto(node, target, "expected [major, minor]");
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
    });
}

void ReadInto(const Node& node, NvmlModel& target)
{
    node.ReadFields({
        {"missing", NamesInto(target.missing, functions)},
        {"nvmlInit_v2", Into(target.init)},
        {"nvmlShutdown", Into(target.shutdown)},
        {"nvmlDeviceGetCount_v2", Into(target.deviceCount)},
        {"devices", Into(target.devices)},
    });
}

} // namespace orvel::simulation
