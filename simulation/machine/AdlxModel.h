#pragma once

#include <optional>
#include <string>
#include <vector>

#include "machine/Node.h"

namespace orvel::simulation {

/// Without a value, the call returns a null pointer.
using AdlxText = std::optional<std::string>;

struct AdlxGpuModel {
    OutputStatus atGpuList;
    Answer<AdlxText> vendorId;
    Answer<AdlxText> name;
    Answer<AdlxText> pnpString;
    Answer<AdlxText> deviceId;
    Answer<uint32_t> totalVramMegabytes;
    Answer<int32_t> adapterIndex;
    Answer<bool> isSupportedGpuClockSpeed;
    Answer<int32_t> gpuClockSpeedMegahertz;
};

struct AdlxModel {
    std::vector<std::string> missing;
    OutputStatus initializeWithCallerAdl;
    OutputStatus initialize;
    OutputStatus getGpus;
    OutputStatus getPerformanceMonitoringServices;
    OutputStatus getSupportedGpuMetrics;
    OutputStatus getCurrentGpuMetrics;
    std::optional<uint64_t> shrinkAfter; // after this many calls of "item at index", the list reports one GPU fewer
    std::vector<AdlxGpuModel> gpus;
};

void ReadInto(const Node& node, AdlxGpuModel& target);
void ReadInto(const Node& node, AdlxModel& target);

} // namespace orvel::simulation
