#pragma once

#include <map>
#include <string>
#include <vector>

#include <guiddef.h>

#include "machine/Node.h"

namespace orvel::simulation {

/// A device property as Windows has it.
struct PropertyValue {
    uint32_t type = 0; // DEVPROP_TYPE_…
    std::vector<uint8_t> bytes;
};

/// How a machine file writes a property's value.
enum class PropertyForm {
    Text,
    Texts,
    Number,     // 32 bits
    LongNumber, // 64 bits
    Flag,
    Date,   // a FILETIME: its number, or the date as "YYYY-MM-DD"
    Power,  // CM_POWER_DATA: the state as "D0" to "D3"
    Status, // NTSTATUS
    Bytes,
};

/// A property that a device can have.
struct PropertyName {
    const char* name; // DEVPKEY_…, without that and the word behind it
    GUID format;
    uint32_t number; // in the format
    PropertyForm form;
};

/// All that are known.
const std::vector<PropertyName>& PropertyNames();

struct DeviceModel {
    std::string instanceId;
    bool isPresent = true;
    Status enumDeviceInfo;
    Status getInstanceId;
    Status openDevRegKey;
    std::map<std::string, Answer<PropertyValue>> properties; // by name

    /// A property that is a text; empty where there is none.
    std::wstring TextOf(const char* property) const;
};

/// The devices of the display class.
struct PnpModel {
    Status getClassDevs;
    Status enumDeviceInfo; // behind the last device; not given: ERROR_NO_MORE_ITEMS
    std::vector<DeviceModel> devices;
};

void ReadInto(const Node& node, PnpModel& target);

} // namespace orvel::simulation
