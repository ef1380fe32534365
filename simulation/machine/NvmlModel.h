#pragma once

#include <array>
#include <map>
#include <string>
#include <vector>

#include "machine/Node.h"

namespace orvel::simulation {

/// Answers by the call's second argument (a threshold or a clock); each has its own value.
using NvmlAnswers = std::map<int32_t, Answer<uint32_t>>;

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
};

struct NvmlModel {
    std::vector<std::string> missing;
    Status init;
    Status shutdown;
    std::map<int32_t, std::string> errorTexts; // where they differ from the usual ones
    Answer<uint32_t> deviceCount;              // not given: the length of devices
    std::vector<NvmlDeviceModel> devices;
};

void ReadInto(const Node& node, NvmlDeviceModel& target);
void ReadInto(const Node& node, NvmlModel& target);

} // namespace orvel::simulation
