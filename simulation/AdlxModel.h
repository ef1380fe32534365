#pragma once

#include "Node.h"

#include <optional>
#include <string>
#include <vector>

namespace orvel::simulation {

struct AdlxGpuModel {
    Status atGpuList;
    Answer<std::string> vendorId;
    Answer<std::string> name;
    Answer<std::string> pnpString;
    Answer<std::string> deviceId;
    Answer<uint32_t> totalVramMegabytes;
    Answer<int32_t> adapterIndex;
    Answer<bool> isSupportedGpuClockSpeed;
    Answer<int32_t> gpuClockSpeedMegahertz;
};

struct AdlxModel {
    std::vector<std::string> missing;
    Status initializeWithCallerAdl;
    Status initialize;
    Status getGpus;
    Status getPerformanceMonitoringServices;
    Status getSupportedGpuMetrics;
    Status getCurrentGpuMetrics;
    std::optional<uint64_t> shrinkAfter; // calls of "item at index" until the list reports one GPU fewer
    std::vector<AdlxGpuModel> gpus;
};

/// The entry points that amdadlx64.dll exports.
const std::vector<std::string>& AdlxEntryPoints();

void ReadInto(const Node& node, AdlxGpuModel& target);
void ReadInto(const Node& node, AdlxModel& target);

} // namespace orvel::simulation
