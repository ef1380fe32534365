#include "machine/AdlxModel.h"

namespace orvel::simulation {

namespace {

const std::vector<std::string> functions = {
    "ADLXQueryFullVersion", "ADLXQueryVersion", "ADLXInitializeWithCallerAdl", "ADLXInitializeWithIncompatibleDriver",
    "ADLXInitialize",       "ADLXTerminate",
};

} // namespace

static void ReadInto(const Node& node, AdlxText& target)
{
    if (!node.IsNull()) {
        ReadInto(node, target.emplace());
    }
}

void ReadInto(const Node& node, AdlxGpuModel& target)
{
    node.ReadFields({
        {"At_GPUList", Into(target.atGpuList)},
        {"VendorId", Into(target.vendorId)},
        {"Name", Into(target.name)},
        {"PNPString", Into(target.pnpString)},
        {"DeviceId", Into(target.deviceId)},
        {"TotalVRAM", Into(target.totalVramMegabytes)},
        {"AdapterIndex", Into(target.adapterIndex)},
        {"IsSupportedGPUClockSpeed", Into(target.isSupportedGpuClockSpeed)},
        {"GPUClockSpeed", Into(target.gpuClockSpeedMegahertz)},
    });
}

void ReadInto(const Node& node, AdlxModel& target)
{
    node.ReadFields({
        {"missing", NamesInto(target.missing, functions)},
        {"ADLXInitializeWithCallerAdl", Into(target.initializeWithCallerAdl)},
        {"ADLXInitialize", Into(target.initialize)},
        {"GetGPUs", Into(target.getGpus)},
        {"GetPerformanceMonitoringServices", Into(target.getPerformanceMonitoringServices)},
        {"GetSupportedGPUMetrics", Into(target.getSupportedGpuMetrics)},
        {"GetCurrentGPUMetrics", Into(target.getCurrentGpuMetrics)},
        {"shrink_after", [&target](const Node& calls) { ReadInto(calls, target.shrinkAfter.emplace()); }},
        {"gpus", Into(target.gpus)},
    });
}

} // namespace orvel::simulation
