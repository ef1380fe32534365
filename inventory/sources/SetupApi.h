#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace orvel::shared::inventory {

/// The properties of a device that are read, under their published names (DEVPKEY_…). The two of the LUID have none.
enum class DeviceProperty {
    HardwareIds,
    DeviceDesc,
    Service,
    BusNumber,
    Address,
    PowerData,
    DevNodeStatus,
    ProblemCode,
    DriverDate,
    DriverVersion,
    DriverInfPath,
    DriverProvider,
    SessionId,
    CurrentLinkSpeed,
    CurrentLinkWidth,
    MaxLinkSpeed,
    MaxLinkWidth,
    IndirectDisplay,
    Luid,
    PhysicalAdapterIndex,
};
inline constexpr std::size_t devicePropertyCount = 20;

/// The values of a driver's registry key that are read.
enum class DriverKeyValue {
    DriverDesc,
    ProviderName,
    DriverVersion,
    InfPath,
    DriverDateData,
    RadeonSoftwareVersion,
    QwMemorySize,
    BiosString,
};
inline constexpr std::size_t driverKeyValueCount = 8;

/// A value as Windows has it: a device property with its DEVPROPTYPE, or a registry value with its REG_ type.
struct RawValue {
    uint32_t error = 0; ///< 0, or the Windows error of the call that should have read it
    uint32_t type = 0;
    std::vector<unsigned char> bytes;
};

/// A present device of the display class.
struct DeviceReading {
    RawValue instanceId; ///< UTF-16
    std::array<RawValue, devicePropertyCount> properties;

    const RawValue& Of(DeviceProperty property) const { return properties[static_cast<std::size_t>(property)]; }
};

struct SetupApiReading {
    uint32_t error = 0; ///< of the call that has ended the listing early; 0 when it is complete
    std::vector<DeviceReading> devices;
};

/// The driver's registry key of a device.
struct DriverKeyReading {
    uint32_t error = 0; ///< of the call that should have opened it
    std::array<RawValue, driverKeyValueCount> values;

    const RawValue& Of(DriverKeyValue value) const { return values[static_cast<std::size_t>(value)]; }
};

/// The driver keys of the listed devices, in the same order.
using DriverKeysReading = std::vector<DriverKeyReading>;

/// Lists the display devices with SetupAPI, hands them out, and then does the same with their driver keys, which SetupAPI
/// opens. May throw std::bad_alloc.
void ReadDevices(const std::function<void(SetupApiReading)>& receiveDevices,
                 const std::function<void(DriverKeysReading)>& receiveKeys);

} // namespace orvel::shared::inventory
