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

static void ReadInto(const Node& node, std::array<int32_t, 3>& target)
{
    ReadInto(node, target, "expected [bus, device, function]");
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
        {"Type", Into(target.type)},
        {"VRAMType", Into(target.vramType)},
        {"RevisionId", Into(target.revisionId)},
        {"SubSystemId", Into(target.subSystemId)},
        {"SubSystemVendorId", Into(target.subSystemVendorId)},
        {"BdfFromADLXGPU", Into(target.bdf)},
        {"LUID", Into(target.luid)},
    });
}

void ReadInto(const Node& node, AdlxModel& target)
{
    node.ReadFields({
        {"missing", NamesInto(target.missing, functions)},
        {"ADLXQueryFullVersion",
         [&target](const Node& version) { ReadInto(version, target.fullVersion = Answer<uint64_t>()); }},
        {"mapping", Into(target.mapping)},
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
