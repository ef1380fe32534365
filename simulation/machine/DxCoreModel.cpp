#include "machine/DxCoreModel.h"

#include <algorithm>

namespace orvel::simulation {

namespace {

/// In the order of DxCoreAttribute.
constexpr std::array<const char*, dxCoreAttributeCount> attributeNames = {"D3D11_GRAPHICS", "D3D12_GRAPHICS",
                                                                          "D3D12_CORE_COMPUTE"};

void ReadAttributes(const Node& node, std::array<bool, dxCoreAttributeCount>& target)
{
    target = {};
    for (const Node& element : node.Elements()) {
        const auto found = std::ranges::find(attributeNames, element.Text());
        if (found == attributeNames.end()) {
            element.Refuse("expected \"D3D11_GRAPHICS\", \"D3D12_GRAPHICS\" or \"D3D12_CORE_COMPUTE\", found \"" +
                           element.Text() + "\"");
        }
        target[static_cast<size_t>(found - attributeNames.begin())] = true;
    }
}

} // namespace

static void ReadInto(const Node& node, DxCoreAdapterModel& target)
{
    node.ReadFields({
        {"attributes", [&target](const Node& list) { ReadAttributes(list, target.attributes); }},
        {"GetAdapter", Into(target.getAdapter)},
        {"InstanceLuid", Into(target.instanceLuid)},
        {"IsIntegrated", Into(target.isIntegrated)},
    });
}

void ReadInto(const Node& node, DxCoreModel& target)
{
    node.ReadFields({
        {"DXCoreCreateAdapterFactory", Into(target.createFactory)},
        {"CreateAdapterList", Into(target.createAdapterList)},
        {"adapters", Into(target.adapters)},
    });
}

} // namespace orvel::simulation
