#include "machine/DxgiModel.h"

namespace orvel::simulation {

void ReadInto(const Node& node, DxgiAdapterModel& target)
{
    node.ReadFields({
        {"VendorId", Into(target.vendorId)},
        {"DeviceId", Into(target.deviceId)},
        {"SubSysId", Into(target.subSysId)},
        {"SharedSystemMemory", Into(target.sharedSystemMemoryBytes)},
        {"Description", Into(target.description)},
    });
}

void ReadInto(const Node& node, DxgiModel& target)
{
    node.ReadFields({
        {"factory", Into(target.factory)},
        {"adapters", Into(target.adapters)},
    });
}

} // namespace orvel::simulation
