#include "machine/DxgiModel.h"

#include <algorithm>

namespace orvel::simulation {

static void ReadListedBy(const Node& node, DxgiAdapterModel& target)
{
    std::vector<std::string> functions;
    NamesInto(functions, {"EnumAdapters", "EnumAdapters1"})(node);
    target.isListedFirst = std::ranges::find(functions, "EnumAdapters") != functions.end();
    target.isListedSecond = std::ranges::find(functions, "EnumAdapters1") != functions.end();
}

void ReadInto(const Node& node, DxgiAdapterModel& target)
{
    node.ReadFields({
        {"VendorId", Into(target.vendorId)},
        {"DeviceId", Into(target.deviceId)},
        {"SubSysId", Into(target.subSysId)},
        {"Revision", Into(target.revision)},
        {"DedicatedVideoMemory", Into(target.dedicatedVideoMemoryBytes)},
        {"DedicatedSystemMemory", Into(target.dedicatedSystemMemoryBytes)},
        {"SharedSystemMemory", Into(target.sharedSystemMemoryBytes)},
        {"Luid", Into(target.luid)},
        {"Flags", Into(target.flags)},
        {"Description", Into(target.description)},
        {"EnumAdapters1", Into(target.enumAdapters1)},
        {"GetDesc1", Into(target.getDesc1)},
        {"listed_by", [&target](const Node& functions) { ReadListedBy(functions, target); }},
    });
}

void ReadInto(const Node& node, DxgiModel& target)
{
    node.ReadFields({
        {"factory", Into(target.factory)},
        {"CreateDXGIFactory1", Into(target.createFactory1)},
        {"EnumAdapters1", Into(target.enumAdapters1)},
        {"adapters", Into(target.adapters)},
    });
}

} // namespace orvel::simulation
