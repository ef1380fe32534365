#include "inventory/Documents.h"

namespace orvel::tests {

namespace {

using tools::ValueType;

const std::vector<tools::InventoryProperty> typed = {
    {"vendor_id", ValueType::Number, "", "PCI vendor"},
    {"device_id", ValueType::Number, "", "PCI device"},
    {"subsystem_id", ValueType::Number, "", "PCI subsystem"},
    {"revision", ValueType::Number, "", "PCI revision"},
    {"luid", ValueType::Number, "", "identifier of the adapter"},
    {"pci_segment", ValueType::Number, "", "PCI segment"},
    {"pci_bus", ValueType::Number, "", "PCI bus"},
    {"pci_device", ValueType::Number, "", "PCI device number"},
    {"pci_function", ValueType::Number, "", "PCI function"},
    {"problem_code", ValueType::Number, "", "the problem"},
    {"integrated", ValueType::Flag, "", "whether the card is part of the processor"},
    {"dedicated_memory_bytes", ValueType::Number, "bytes", "video memory of the card"},
    {"dedicated_system_memory_bytes", ValueType::Number, "bytes", "system memory of the card"},
    {"shared_memory_bytes", ValueType::Number, "bytes", "system memory that the card may use"},
    {"board_memory_bytes", ValueType::Number, "bytes", "video memory on the board"},
    {"memory_bus_width_bits", ValueType::Number, "bits", "width of the bus"},
    {"memory_clock_max_mhz", ValueType::Number, "MHz", "highest clock of the video memory"},
    {"core_clock_max_mhz", ValueType::Number, "MHz", "highest clock of the cores"},
    {"core_count", ValueType::Number, "", "number of cores"},
    {"pcie_generation", ValueType::Number, "", "generation of the link"},
    {"pcie_generation_max", ValueType::Number, "", "highest generation"},
    {"pcie_lanes", ValueType::Number, "", "lanes"},
    {"pcie_lanes_max", ValueType::Number, "", "most lanes"},
    {"ecc_enabled", ValueType::Flag, "", "whether error correction (ECC) is enabled"},
    {"ecc_corrected_errors", ValueType::Number, "", "corrected errors"},
    {"ecc_uncorrected_errors", ValueType::Number, "", "uncorrected errors"},
    {"temperature_slowdown_celsius", ValueType::Number, "Celsius", "slows down"},
    {"temperature_shutdown_celsius", ValueType::Number, "Celsius", "shuts down"},
    {"displays", ValueType::Displays, "", "the active displays"},
    {"fans", ValueType::Number, "rpm", "a property of a later release"},
};

tools::InventoryProperty PropertyOf(const std::string& name)
{
    for (const auto& property : typed) {
        if (property.Name == name) {
            return property;
        }
    }
    return {name, ValueType::Text, "", "text of " + name};
}

} // namespace

OrderedJson Known(OrderedJson value, const char* source)
{
    return {{"value", std::move(value)}, {"status", "known"}, {"source", source}, {"code", nullptr}, {"reason", nullptr}};
}

OrderedJson Unknown(const char* status, OrderedJson source, const char* reason, OrderedJson code)
{
    return {{"value", nullptr},
            {"status", status},
            {"source", std::move(source)},
            {"code", std::move(code)},
            {"reason", reason}};
}

OrderedJson DisplayObject(const OrderedJson& known)
{
    OrderedJson display = {{"gdi_name", nullptr}, {"monitor_name", nullptr},       {"width", nullptr},
                           {"height", nullptr},   {"refresh_millihertz", nullptr}, {"connector", nullptr},
                           {"primary", nullptr}};
    display.update(known);
    return display;
}

std::vector<tools::InventoryProperty> TableOf(const std::vector<std::string>& names)
{
    std::vector<tools::InventoryProperty> table;
    for (const std::string& name : names) {
        table.push_back(PropertyOf(name));
    }
    return table;
}

tools::Inventory InventoryOf(const std::vector<OrderedJson>& cards, const OrderedJson& sources)
{
    std::vector<std::string> names;
    const OrderedJson first = cards.empty() ? OrderedJson::object() : cards.front();
    for (const auto& item : first.items()) {
        names.push_back(item.key());
    }
    const OrderedJson document = {
        {"schema_version", 1}, {"form", "full"}, {"depth", "drivers"}, {"sources", sources}, {"cards", cards}};
    return tools::ReadInventory(document.dump(), TableOf(names));
}

OrderedJson WholeCard()
{
    const OrderedJson display = DisplayObject({{"gdi_name", "\\\\.\\DISPLAY1"},
                                               {"monitor_name", "DELL U2720Q"},
                                               {"width", 3840},
                                               {"height", 2160},
                                               {"refresh_millihertz", 59'940},
                                               {"connector", "DisplayPort"},
                                               {"primary", true}});
    const OrderedJson values = {
        {"instance_id", "PCI\\VEN_10DE&DEV_2684&SUBSYS_889B1043&REV_A1\\4&2283F625&0&0019"},
        {"kind", "pci"},
        {"name", "NVIDIA GeForce RTX 4090"},
        {"vendor", "NVIDIA"},
        {"vendor_id", 0x10DE},
        {"device_id", 0x2684},
        {"subsystem_id", 0x889B1043},
        {"revision", 0xA1},
        {"luid", 0xC1F2},
        {"pci_segment", 0},
        {"pci_bus", 1},
        {"pci_device", 0},
        {"pci_function", 0},
        {"driver_version", "32.0.15.9672"},
        {"driver_version_marketing", "596.72"},
        {"driver_date", "2026-01-05"},
        {"driver_provider", "NVIDIA"},
        {"driver_inf", "oem12.inf"},
        {"service", "nvlddmkm"},
        {"problem_code", 0},
        {"problem", "none"},
        {"power_state", "D0"},
        {"integrated", false},
        {"dedicated_memory_bytes", 25'769'803'776},
        {"dedicated_system_memory_bytes", 0},
        {"shared_memory_bytes", 34'252'783'616},
        {"board_memory_bytes", 25'757'220'864},
        {"memory_type", "GDDR6X"},
        {"memory_bus_width_bits", 384},
        {"memory_clock_max_mhz", 10'501},
        {"core_clock_max_mhz", 2'520},
        {"core_count", 16'384},
        {"compute_capability", "8.9"},
        {"pcie_generation", 1},
        {"pcie_generation_max", 4},
        {"pcie_lanes", 8},
        {"pcie_lanes_max", 16},
        {"bios_version", "95.02.3C.80.9A"},
        {"serial_number", "0324518003361"},
        {"uuid", "GPU-1f8a7f0e-0d5b-6a43-9b4c-0b6a7c1d2e3f"},
        {"ecc_enabled", true},
        {"ecc_corrected_errors", 3},
        {"ecc_uncorrected_errors", 0},
        {"temperature_slowdown_celsius", 88},
        {"temperature_shutdown_celsius", 92},
        {"displays", OrderedJson::array({display})},
    };
    OrderedJson card;
    for (const auto& item : values.items()) {
        card[item.key()] = Known(item.value());
    }
    return card;
}

} // namespace orvel::tests
