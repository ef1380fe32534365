"""Made from inventory/schema/inventory.schema.json by ./dev generate."""

from typing import List, Literal, Optional, TypedDict

Depth = Literal["system", "graphics", "drivers"]

Status = Literal["known", "unsupported", "unavailable", "failed", "not asked"]

# Such as "setupapi", "driver_key", "display_config", "dxgi", "dxcore", "nvml", "nvapi", "adlx"; later releases add some.
SourceName = str

SourceState = Literal["answered", "unavailable", "failed", "not asked"]

# Such as "source not present", "no such value", "unusable", "number without a name", "no device", "not listed", "cannot be
# told apart", "belongs to the card that renders", "belongs to the first linked card", "no LUID", "not on PCI", "not
# supported", "no source for this vendor", "vendor not known", "driver of another provider", "refused", "no answer", "depth",
# "asleep", "power state not known", "lists a device that Windows does not"; later releases add some.
Reason = str


class Display(TypedDict):
    """An active display of a card; None where something is not known."""

    gdi_name: Optional[str]
    monitor_name: Optional[str]
    width: Optional[int]
    height: Optional[int]
    refresh_millihertz: Optional[int]
    connector: Optional[str]
    primary: Optional[bool]


class TextValue(TypedDict):
    """A value with its source, or None and the reason."""

    value: Optional[str]
    status: Status
    source: Optional[SourceName]
    code: Optional[int]
    reason: Optional[Reason]


class NumberValue(TypedDict):
    """A value with its source, or None and the reason."""

    value: Optional[int]
    status: Status
    source: Optional[SourceName]
    code: Optional[int]
    reason: Optional[Reason]


class FlagValue(TypedDict):
    """A value with its source, or None and the reason."""

    value: Optional[bool]
    status: Status
    source: Optional[SourceName]
    code: Optional[int]
    reason: Optional[Reason]


class DisplaysValue(TypedDict):
    """A value with its source, or None and the reason."""

    value: Optional[List[Display]]
    status: Status
    source: Optional[SourceName]
    code: Optional[int]
    reason: Optional[Reason]


class Card(TypedDict):
    """A card, each value with its source."""

    # Windows' identifier of the device; the key to store a card under
    instance_id: TextValue
    # pci, soc, software, remote, indirect, paravirtual or other
    kind: TextValue
    # description of the device
    name: TextValue
    # name of the vendor
    vendor: TextValue
    # PCI vendor; four ASCII letters for an ACPI device
    vendor_id: NumberValue
    # PCI device; four ASCII characters for an ACPI device
    device_id: NumberValue
    # PCI subsystem: device in the upper, vendor in the lower 16 bits
    subsystem_id: NumberValue
    # PCI revision
    revision: NumberValue
    # identifier of the adapter until Windows, the driver or the device restarts
    luid: NumberValue
    # PCI segment
    pci_segment: NumberValue
    # PCI bus
    pci_bus: NumberValue
    # PCI device number on the bus
    pci_device: NumberValue
    # PCI function
    pci_function: NumberValue
    # version of the driver in Windows' form, four numbers
    driver_version: TextValue
    # version of the driver as its vendor publishes it
    driver_version_marketing: TextValue
    # date of the driver, YYYY-MM-DD
    driver_date: TextValue
    # company that provides the driver
    driver_provider: TextValue
    # file name of the driver's INF
    driver_inf: TextValue
    # name of the driver's service
    service: TextValue
    # Windows' problem code of the device (CM_PROB_); 0: none
    problem_code: NumberValue
    # name of the problem code; none for 0
    problem: TextValue
    # D0, D1, D2 or D3; reading it does not wake the card
    power_state: TextValue
    # whether the card is part of the processor or chipset
    integrated: FlagValue
    # video memory of the card (bytes)
    dedicated_memory_bytes: NumberValue
    # system memory reserved for the card (bytes)
    dedicated_system_memory_bytes: NumberValue
    # most system memory that the card may use (bytes)
    shared_memory_bytes: NumberValue
    # video memory as the vendor's driver reports it (bytes)
    board_memory_bytes: NumberValue
    # type of the video memory, such as GDDR6
    memory_type: TextValue
    # width of the bus to the video memory (bits)
    memory_bus_width_bits: NumberValue
    # highest clock of the video memory (MHz)
    memory_clock_max_mhz: NumberValue
    # highest clock of the cores (MHz)
    core_clock_max_mhz: NumberValue
    # number of cores
    core_count: NumberValue
    # CUDA compute capability, major.minor
    compute_capability: TextValue
    # current PCI Express generation; lower while the card is idle
    pcie_generation: NumberValue
    # highest PCI Express generation of the card
    pcie_generation_max: NumberValue
    # current number of PCI Express lanes
    pcie_lanes: NumberValue
    # highest number of PCI Express lanes of the card
    pcie_lanes_max: NumberValue
    # version of the video BIOS
    bios_version: TextValue
    # serial number of the board
    serial_number: TextValue
    # unique identifier that the vendor assigned to the GPU
    uuid: TextValue
    # whether error correction (ECC) is enabled
    ecc_enabled: FlagValue
    # corrected memory errors over the lifetime of the card
    ecc_corrected_errors: NumberValue
    # uncorrected memory errors over the lifetime of the card
    ecc_uncorrected_errors: NumberValue
    # temperature at which the card starts to slow down (Celsius)
    temperature_slowdown_celsius: NumberValue
    # temperature at which the card shuts down (Celsius)
    temperature_shutdown_celsius: NumberValue
    # the active displays
    displays: DisplaysValue


class FlatCard(TypedDict):
    """A card, each value alone; None where it is not known."""

    instance_id: Optional[str]
    kind: Optional[str]
    name: Optional[str]
    vendor: Optional[str]
    vendor_id: Optional[int]
    device_id: Optional[int]
    subsystem_id: Optional[int]
    revision: Optional[int]
    luid: Optional[int]
    pci_segment: Optional[int]
    pci_bus: Optional[int]
    pci_device: Optional[int]
    pci_function: Optional[int]
    driver_version: Optional[str]
    driver_version_marketing: Optional[str]
    driver_date: Optional[str]
    driver_provider: Optional[str]
    driver_inf: Optional[str]
    service: Optional[str]
    problem_code: Optional[int]
    problem: Optional[str]
    power_state: Optional[str]
    integrated: Optional[bool]
    dedicated_memory_bytes: Optional[int]
    dedicated_system_memory_bytes: Optional[int]
    shared_memory_bytes: Optional[int]
    board_memory_bytes: Optional[int]
    memory_type: Optional[str]
    memory_bus_width_bits: Optional[int]
    memory_clock_max_mhz: Optional[int]
    core_clock_max_mhz: Optional[int]
    core_count: Optional[int]
    compute_capability: Optional[str]
    pcie_generation: Optional[int]
    pcie_generation_max: Optional[int]
    pcie_lanes: Optional[int]
    pcie_lanes_max: Optional[int]
    bios_version: Optional[str]
    serial_number: Optional[str]
    uuid: Optional[str]
    ecc_enabled: Optional[bool]
    ecc_corrected_errors: Optional[int]
    ecc_uncorrected_errors: Optional[int]
    temperature_slowdown_celsius: Optional[int]
    temperature_shutdown_celsius: Optional[int]
    displays: Optional[List[Display]]
