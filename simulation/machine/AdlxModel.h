#pragma once

#include <array>
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
    Answer<int32_t> type;
    Answer<AdlxText> vramType;
    Answer<AdlxText> revisionId;
    Answer<AdlxText> subSystemId;
    Answer<AdlxText> subSystemVendorId;
    Answer<std::array<int32_t, 3>> bdf; // bus, device, function
    Answer<uint64_t> luid;              // with it, the GPU has the interface IADLXGPU2
};

struct AdlxModel {
    std::vector<std::string> missing;
    Answer<uint64_t> fullVersion{true, 0, 0x0001000200000048}; // 1.2.0, build 72
    bool mapping = true;                                       // whether an initialisation with ADL returns the mapping
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
