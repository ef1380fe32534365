#pragma once

#include "Node.h"

#include <array>
#include <string>
#include <vector>

namespace orvel::simulation {

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

/// Clocks in kHz; a domain that is not given is not present.
struct NvapiClocks {
    std::optional<uint32_t> domain0;
    std::optional<uint32_t> domain4;
};

struct NvapiEccStatus {
    bool supported = false;
    bool enabled = false;
};

struct NvapiEccErrors {
    uint64_t singleBit = 0;
    uint64_t doubleBit = 0;
};

struct NvapiGpuModel {
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
    Answer<NvapiClocks> clocks;
    Answer<NvapiEccStatus> eccStatus;
    Answer<NvapiEccErrors> eccErrors;
};

/// The words at offsets 8 and 12 of the multi-GPU query.
using NvapiMultiGpuWords = std::array<uint32_t, 2>;

struct NvapiModel {
    std::vector<std::string> unresolved;
    Status initialize;
    Status unload;
    Status enumPhysicalGpus;
    Answer<NvapiMultiGpuWords> multiGpu;
    std::vector<NvapiGpuModel> gpus;
};

/// The functions that nvapi_QueryInterface resolves, by the names that machine files use.
const std::vector<std::string>& NvapiFunctionNames();

void ReadInto(const Node& node, NvapiPciIdentifiers& target);
void ReadInto(const Node& node, NvapiMemoryInfo& target);
void ReadInto(const Node& node, NvapiClocks& target);
void ReadInto(const Node& node, NvapiEccStatus& target);
void ReadInto(const Node& node, NvapiEccErrors& target);
void ReadInto(const Node& node, NvapiGpuModel& target);
void ReadInto(const Node& node, NvapiModel& target);

} // namespace orvel::simulation
