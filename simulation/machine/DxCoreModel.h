#pragma once

#include <array>
#include <vector>

#include "machine/Node.h"

namespace orvel::simulation {

/// What an adapter can do (DXCORE_ADAPTER_ATTRIBUTE_…), as indexes of DxCoreAdapterModel::attributes.
enum class DxCoreAttribute { D3D11Graphics, D3D12Graphics, D3D12CoreCompute };
constexpr size_t dxCoreAttributeCount = 3;

struct DxCoreAdapterModel {
    std::array<bool, dxCoreAttributeCount> attributes{true, true, true};
    Status getAdapter;
    Answer<uint64_t> instanceLuid;
    Answer<bool> isIntegrated;
};

struct DxCoreModel {
    Status createFactory;
    Status createAdapterList;
    std::vector<DxCoreAdapterModel> adapters;
};

void ReadInto(const Node& node, DxCoreModel& target);

} // namespace orvel::simulation
