#include "machine/DxgiModel.h"

namespace orvel::simulation {

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
