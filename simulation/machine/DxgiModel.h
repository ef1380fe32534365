#pragma once

#include <string>
#include <vector>

#include "machine/Bytes.h"
#include "machine/Node.h"

namespace orvel::simulation {

struct DxgiAdapterModel {
    uint32_t vendorId = 0;
    uint32_t deviceId = 0;
    uint32_t subSysId = 0;
    uint32_t revision = 0;
    uint64_t dedicatedVideoMemoryBytes = 0;
    uint64_t dedicatedSystemMemoryBytes = 0;
    uint64_t sharedSystemMemoryBytes = 0;
    uint64_t luid = 0;
    uint32_t flags = 0; // DXGI_ADAPTER_FLAG_…
    WideText description;
    Status enumAdapters1;
    Status getDesc1;
    bool isListedFirst = true;  // by EnumAdapters
    bool isListedSecond = true; // by EnumAdapters1
};

struct DxgiModel {
    Status factory;
    Status createFactory1;                  // not given: as factory
    Status enumAdapters1;                   // behind the last adapter; not given: DXGI_ERROR_NOT_FOUND
    std::vector<DxgiAdapterModel> adapters; // in enumeration order
};

void ReadInto(const Node& node, DxgiAdapterModel& target);
void ReadInto(const Node& node, DxgiModel& target);

} // namespace orvel::simulation
