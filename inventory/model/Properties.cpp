#include "model/Properties.h"

#include <algorithm>
#include <iterator>

namespace orvel::shared::inventory {

namespace {

using enum Source;
using P = Property;

// One row a line.
// clang-format off
constexpr PropertyRow rows[] = {
    {P::InstanceId, "instance_id", Type::Text, "", "Windows' identifier of the device; the key to store a card under", {SetupApi}},
    {P::Kind, "kind", Type::Text, "", "pci, soc, software, remote, indirect, paravirtual or other", {SetupApi, Dxgi}},
    {P::Name, "name", Type::Text, "", "description of the device", {SetupApi, DriverKey, Dxgi}},
    {P::Vendor, "vendor", Type::Text, "", "name of the vendor", {SetupApi, Dxgi}},
    {P::VendorId, "vendor_id", Type::Number, "", "PCI vendor; four ASCII letters for an ACPI device", {SetupApi, Dxgi}},
    {P::DeviceId, "device_id", Type::Number, "", "PCI device; four ASCII characters for an ACPI device", {SetupApi, Dxgi}},
    {P::SubsystemId, "subsystem_id", Type::Number, "", "PCI subsystem: device in the upper, vendor in the lower 16 bits", {SetupApi, Dxgi}},
    {P::Revision, "revision", Type::Number, "", "PCI revision", {SetupApi, Dxgi}},
    {P::Luid, "luid", Type::Number, "", "identifier of the adapter until Windows, the driver or the device restarts", {SetupApi, Dxgi}},
    {P::PciSegment, "pci_segment", Type::Number, "", "PCI segment", {SetupApi}},
    {P::PciBus, "pci_bus", Type::Number, "", "PCI bus", {SetupApi}},
    {P::PciDevice, "pci_device", Type::Number, "", "PCI device number on the bus", {SetupApi}},
    {P::PciFunction, "pci_function", Type::Number, "", "PCI function", {SetupApi}},
    {P::DriverVersion, "driver_version", Type::Text, "", "version of the driver in Windows' form, four numbers", {SetupApi, DriverKey}},
    {P::DriverVersionMarketing, "driver_version_marketing", Type::Text, "", "version of the driver as its vendor publishes it", {Nvml, SetupApi, DriverKey}},
    {P::DriverDate, "driver_date", Type::Text, "", "date of the driver, YYYY-MM-DD", {SetupApi, DriverKey}},
    {P::DriverProvider, "driver_provider", Type::Text, "", "company that provides the driver", {SetupApi, DriverKey}},
    {P::DriverInf, "driver_inf", Type::Text, "", "file name of the driver's INF", {SetupApi, DriverKey}},
    {P::Service, "service", Type::Text, "", "name of the driver's service", {SetupApi}},
    {P::ProblemCode, "problem_code", Type::Number, "", "Windows' problem code of the device (CM_PROB_); 0: none", {SetupApi}},
    {P::Problem, "problem", Type::Text, "", "name of the problem code; none for 0", {SetupApi}},
    {P::PowerState, "power_state", Type::Text, "", "D0, D1, D2 or D3; reading it does not wake the card", {SetupApi}},
    {P::Integrated, "integrated", Type::Flag, "", "whether the card is part of the processor or chipset", {Adlx, Nvapi, DxCore}},
    {P::DedicatedMemoryBytes, "dedicated_memory_bytes", Type::Number, "bytes", "video memory of the card", {Dxgi, DriverKey}},
    {P::DedicatedSystemMemoryBytes, "dedicated_system_memory_bytes", Type::Number, "bytes", "system memory reserved for the card", {Dxgi}},
    {P::SharedMemoryBytes, "shared_memory_bytes", Type::Number, "bytes", "most system memory that the card may use", {Dxgi}},
    {P::BoardMemoryBytes, "board_memory_bytes", Type::Number, "bytes", "video memory as the vendor's driver reports it", {Nvml, Adlx}},
    {P::MemoryType, "memory_type", Type::Text, "", "type of the video memory, such as GDDR6", {Adlx}},
    {P::MemoryBusWidthBits, "memory_bus_width_bits", Type::Number, "bits", "width of the bus to the video memory", {Nvml, Nvapi}},
    {P::MemoryClockMaxMhz, "memory_clock_max_mhz", Type::Number, "MHz", "highest clock of the video memory", {Nvml, Nvapi}},
    {P::CoreClockMaxMhz, "core_clock_max_mhz", Type::Number, "MHz", "highest clock of the cores", {Nvml, Nvapi}},
    {P::CoreCount, "core_count", Type::Number, "", "number of cores", {Nvml, Nvapi}},
    {P::ComputeCapability, "compute_capability", Type::Text, "", "CUDA compute capability, major.minor", {Nvml}},
    {P::PcieGeneration, "pcie_generation", Type::Number, "", "current PCI Express generation; lower while the card is idle", {SetupApi, Nvml}},
    {P::PcieGenerationMax, "pcie_generation_max", Type::Number, "", "highest PCI Express generation of the card", {SetupApi, Nvml}},
    {P::PcieLanes, "pcie_lanes", Type::Number, "", "current number of PCI Express lanes", {SetupApi, Nvml}},
    {P::PcieLanesMax, "pcie_lanes_max", Type::Number, "", "highest number of PCI Express lanes of the card", {SetupApi, Nvml}},
    {P::BiosVersion, "bios_version", Type::Text, "", "version of the video BIOS", {Nvml, DriverKey}},
    {P::SerialNumber, "serial_number", Type::Text, "", "serial number of the board", {Nvml}},
    {P::Uuid, "uuid", Type::Text, "", "unique identifier that the vendor assigned to the GPU", {Nvml}},
    {P::EccEnabled, "ecc_enabled", Type::Flag, "", "whether error correction (ECC) is enabled", {Nvml}},
    {P::EccCorrectedErrors, "ecc_corrected_errors", Type::Number, "", "corrected memory errors over the lifetime of the card", {Nvml}},
    {P::EccUncorrectedErrors, "ecc_uncorrected_errors", Type::Number, "", "uncorrected memory errors over the lifetime of the card", {Nvml}},
    {P::TemperatureSlowdownCelsius, "temperature_slowdown_celsius", Type::Number, "Celsius", "temperature at which the card starts to slow down", {Nvml}},
    {P::TemperatureShutdownCelsius, "temperature_shutdown_celsius", Type::Number, "Celsius", "temperature at which the card shuts down", {Nvml}},
    {P::Displays, "displays", Type::Displays, "", "the active displays", {DisplayConfig}},
};
// clang-format on

constexpr bool IsInOrder()
{
    for (std::size_t index = 0; index < std::size(rows); ++index) {
        if (rows[index].property != static_cast<Property>(index)) {
            return false;
        }
    }
    return true;
}

static_assert(std::size(rows) == propertyCount && IsInOrder());

bool IsMarketingVersion(Property property, Source source)
{
    return property == P::DriverVersionMarketing && (source == SetupApi || source == DriverKey);
}

} // namespace

const PropertyRow& RowOf(Property property)
{
    return rows[static_cast<std::size_t>(property)];
}

std::optional<Property> FindProperty(std::string_view name)
{
    const auto row =
        std::find_if(std::begin(rows), std::end(rows), [&](const PropertyRow& each) { return each.name == name; });
    return row == std::end(rows) ? std::nullopt : std::optional(row->property);
}

bool IsForAnyVendor(Property property, Source source)
{
    return DepthOf(source) != Depth::Drivers && !IsMarketingVersion(property, source);
}

bool IsForVendor(Property property, Source source, unsigned long long vendorId)
{
    if (IsForAnyVendor(property, source)) {
        return true;
    }
    const bool isAmdSource = source == Adlx || source == DriverKey;
    return vendorId == nvidiaVendorId ? source != Adlx : IsAmd(vendorId) && isAmdSource;
}

} // namespace orvel::shared::inventory
