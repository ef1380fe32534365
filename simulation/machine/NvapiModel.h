#pragma once

#include <array>
#include <map>
#include <string>
#include <vector>

#include "machine/Node.h"

namespace orvel::simulation {

/// The length of the array that lists the GPUs.
constexpr size_t maximumGpus = 64;

struct NvapiPciIdentifiers {
    uint32_t device = 0;
    uint32_t subsystem = 0;
    uint32_t revision = 0;
    uint32_t extended = 0;
};

struct NvapiMemoryInfo {
    uint64_t offset32 = 0;
    uint64_t offset40 = 0;
};

/// A clock domain. Default: not present.
struct NvapiClock {
    bool present = false;
    uint32_t kilohertz = 0;
};

struct NvapiClocks {
    NvapiClock domain0;
    NvapiClock domain4;
};

/// The answer for every clock type, or one for each.
struct NvapiClockAnswers {
    Answer<NvapiClocks> ofAll;
    std::map<uint32_t, Answer<NvapiClocks>> byType; // if not empty, used instead of ofAll
};

/// Whole words, of which NVAPI defines bit 0.
struct NvapiEccStatus {
    uint32_t supported = 0;
    uint32_t enabled = 0;
};

struct NvapiEccErrors {
    uint64_t singleBit = 0;
    uint64_t doubleBit = 0;
};

/// The logical GPU of a physical one.
struct NvapiLogicalGpu {
    uint64_t luid = 0;
    uint32_t physicalGpuCount = 1;
};

struct NvapiGpuModel {
    bool tcc = false; // it only computes, and another function lists it
    Answer<std::string> fullName;
    Answer<std::string> vbiosVersion;
    Answer<int32_t> busId;
    Answer<int32_t> busType;
    Answer<int32_t> gpuType;
    Answer<int32_t> coreCount;
    Answer<int32_t> ramBusWidth;
    Answer<int32_t> pcieWidth;
    Answer<NvapiPciIdentifiers> pciIdentifiers;
    Answer<NvapiMemoryInfo> memoryInfo;
    NvapiClockAnswers clocks;
    Answer<NvapiEccStatus> eccStatus;
    Answer<NvapiEccErrors> eccErrors;
    Answer<int32_t> busSlotId;
    Status logicalGpuFromPhysicalGpu;
    Answer<NvapiLogicalGpu> logicalGpuInfo;
};

/// The words at offsets 8 and 12 of the multi-GPU query.
using NvapiMultiGpuWords = std::array<uint32_t, 2>;

struct NvapiModel {
    std::vector<std::string> unresolved;
    Status initialize;
    Status unload;
    OutputStatus enumTccPhysicalGpus;
    OutputStatus enumPhysicalGpus; // default: success if there are GPUs
    Answer<NvapiMultiGpuWords> multiGpu;
    std::vector<NvapiGpuModel> gpus;
};

void ReadInto(const Node& node, NvapiPciIdentifiers& target);
void ReadInto(const Node& node, NvapiMemoryInfo& target);
void ReadInto(const Node& node, NvapiClock& target);
void ReadInto(const Node& node, NvapiClocks& target);
void ReadInto(const Node& node, NvapiEccStatus& target);
void ReadInto(const Node& node, NvapiEccErrors& target);
void ReadInto(const Node& node, NvapiLogicalGpu& target);
void ReadInto(const Node& node, NvapiGpuModel& target);
void ReadInto(const Node& node, NvapiModel& target);

} // namespace orvel::simulation
