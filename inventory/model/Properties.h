#pragma once

#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string_view>

namespace orvel::shared::inventory {

/// How much is asked. Each depth includes those before it.
enum class Depth { System, Graphics, Drivers };

/// The interfaces that values come from.
enum class Source { SetupApi, DriverKey, DisplayConfig, Dxgi, DxCore, Nvml, Nvapi, Adlx };
inline constexpr std::size_t sourceCount = 8;

/// The depth from which on a source is asked.
constexpr Depth DepthOf(Source source)
{
    if (source >= Source::Nvml) {
        return Depth::Drivers;
    }
    return source >= Source::Dxgi ? Depth::Graphics : Depth::System;
}

enum class Type { Text, Number, Flag, Displays };

/// In the order of the table, of the JSON document and of the C interface, to which new ones are appended.
enum class Property {
    InstanceId,
    Kind,
    Name,
    Vendor,
    VendorId,
    DeviceId,
    SubsystemId,
    Revision,
    Luid,
    PciSegment,
    PciBus,
    PciDevice,
    PciFunction,
    DriverVersion,
    DriverVersionMarketing,
    DriverDate,
    DriverProvider,
    DriverInf,
    Service,
    ProblemCode,
    Problem,
    PowerState,
    Integrated,
    DedicatedMemoryBytes,
    DedicatedSystemMemoryBytes,
    SharedMemoryBytes,
    BoardMemoryBytes,
    MemoryType,
    MemoryBusWidthBits,
    MemoryClockMaxMhz,
    CoreClockMaxMhz,
    CoreCount,
    ComputeCapability,
    PcieGeneration,
    PcieGenerationMax,
    PcieLanes,
    PcieLanesMax,
    BiosVersion,
    SerialNumber,
    Uuid,
    EccEnabled,
    EccCorrectedErrors,
    EccUncorrectedErrors,
    TemperatureSlowdownCelsius,
    TemperatureShutdownCelsius,
    Displays,
};
inline constexpr std::size_t propertyCount = 46;

/// Sources in order of preference.
class SourceList {
public:
    constexpr SourceList(std::initializer_list<Source> sources)
    {
        for (const Source source : sources) {
            entries[count++] = source;
        }
    }
    constexpr const Source* begin() const { return entries; }
    constexpr const Source* end() const { return entries + count; }

private:
    Source entries[3]{};
    std::size_t count = 0;
};

struct PropertyRow {
    Property property;
    const char* name;
    Type type;
    const char* unit; ///< "" for none
    const char* description;
    SourceList sources;
};

/// The row of a property.
const PropertyRow& RowOf(Property property);

/// The property of a name; empty when there is none.
std::optional<Property> FindProperty(std::string_view name);

/// PCI's numbers of the vendors whose own sources the table names.
inline constexpr unsigned nvidiaVendorId = 0x10DE;
inline constexpr unsigned amdVendorId = 0x1002;
inline constexpr unsigned amdProcessorVendorId = 0x1022;

constexpr bool IsAmd(unsigned long long vendorId)
{
    return vendorId == amdVendorId || vendorId == amdProcessorVendorId;
}

/// Whether a source can have a property for the cards of any vendor.
bool IsForAnyVendor(Property property, Source source);

/// Whether a source can have a property for the cards of a vendor.
bool IsForVendor(Property property, Source source, unsigned long long vendorId);

} // namespace orvel::shared::inventory
