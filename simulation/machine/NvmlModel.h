#pragma once

#include <array>
#include <map>
#include <string>
#include <vector>

#include "machine/Node.h"

namespace orvel::simulation {

/// Answers by the call's second argument (a threshold or a clock); each has its own value.
using NvmlAnswers = std::map<int32_t, Answer<uint32_t>>;

/// Answers by two arguments: a type of memory errors and a counter.
using NvmlCounters = std::map<std::array<int32_t, 2>, Answer<uint64_t>>;

struct NvmlPciInfo {
    uint32_t domain = 0;
    uint32_t bus = 0;
    uint32_t device = 0;
    uint32_t pciDeviceId = 0;
    uint32_t pciSubSystemId = 0;
};

/// Bytes.
struct NvmlMemory {
    uint64_t total = 0;
    uint64_t free = 0;
    uint64_t used = 0;
};

struct NvmlDeviceModel {
    OutputStatus handle;
    Answer<std::string> serial;
    Answer<std::array<int32_t, 2>> cudaComputeCapability; // major, minor
    Answer<NvmlAnswers> temperatureThreshold;             // degrees Celsius
    Answer<NvmlAnswers> clockInfo;                        // MHz
    Answer<uint32_t> currentPcieGeneration;
    Answer<uint32_t> maximumPcieGeneration;
    Answer<uint32_t> maximumPcieWidth;
    Answer<uint32_t> memoryBusWidth;
    Answer<NvmlPciInfo> pciInfo;
    Answer<NvmlMemory> memoryInfo;
    Answer<std::string> uuid;
    Answer<std::string> vbiosVersion;
    Answer<NvmlAnswers> maxClockInfo; // MHz
    Answer<uint32_t> numGpuCores;
    Answer<uint32_t> currentPcieWidth;
    Answer<uint32_t> gpuMaximumPcieGeneration;
    Answer<std::array<int32_t, 2>> eccMode; // current, pending
    Answer<NvmlCounters> totalEccErrors;
};

struct NvmlModel {
    std::vector<std::string> missing;
    Status init;
    Status shutdown;
    std::map<int32_t, std::string> errorTexts; // where they differ from the usual ones
    Answer<std::string> driverVersion;
    Answer<uint32_t> deviceCount; // not given: the length of devices
    std::vector<NvmlDeviceModel> devices;
};

void ReadInto(const Node& node, NvmlDeviceModel& target);
void ReadInto(const Node& node, NvmlModel& target);

} // namespace orvel::simulation
