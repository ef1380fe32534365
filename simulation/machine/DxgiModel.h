#pragma once

#include <string>
#include <vector>

#include "machine/Node.h"

namespace orvel::simulation {

struct DxgiAdapterModel {
    uint32_t vendorId = 0;
    uint32_t deviceId = 0;
    uint32_t subSysId = 0;
    uint64_t sharedSystemMemoryBytes = 0;
    std::string description;
};

struct DxgiModel {
    Status factory;
    std::vector<DxgiAdapterModel> adapters; // in enumeration order
};

void ReadInto(const Node& node, DxgiAdapterModel& target);
void ReadInto(const Node& node, DxgiModel& target);

} // namespace orvel::simulation
