// Made from inventory/schema/inventory.schema.json by ./dev generate.

import type { Display } from "./index.js";

export type Depth = "system" | "graphics" | "drivers";

export type Status = "known" | "unsupported" | "unavailable" | "failed" | "not asked";

export type SourceName =
    | "setupapi"
    | "driver_key"
    | "display_config"
    | "dxgi"
    | "dxcore"
    | "nvml"
    | "nvapi"
    | "adlx"
    | (string & {});

export type SourceState = "answered" | "unavailable" | "failed" | "not asked";

export type Reason =
    | "source not present"
    | "no such value"
    | "unusable"
    | "number without a name"
    | "no device"
    | "not listed"
    | "cannot be told apart"
    | "belongs to the card that renders"
    | "belongs to the first linked card"
    | "no LUID"
    | "not on PCI"
    | "not supported"
    | "no source for this vendor"
    | "vendor not known"
    | "driver of another provider"
    | "refused"
    | "no answer"
    | "depth"
    | "asleep"
    | "power state not known"
    | "lists a device that Windows does not"
    | (string & {});

/** The properties of a card, and the types of their values. */
export interface Properties {
    /** Windows' identifier of the device; the key to store a card under */
    instance_id: string;
    /** pci, soc, software, remote, indirect, paravirtual or other */
    kind: string;
    /** description of the device */
    name: string;
    /** name of the vendor */
    vendor: string;
    /** PCI vendor; four ASCII letters for an ACPI device */
    vendor_id: number;
    /** PCI device; four ASCII characters for an ACPI device */
    device_id: number;
    /** PCI subsystem: device in the upper, vendor in the lower 16 bits */
    subsystem_id: number;
    /** PCI revision */
    revision: number;
    /** identifier of the adapter until Windows, the driver or the device restarts */
    luid: number;
    /** PCI segment */
    pci_segment: number;
    /** PCI bus */
    pci_bus: number;
    /** PCI device number on the bus */
    pci_device: number;
    /** PCI function */
    pci_function: number;
    /** version of the driver in Windows' form, four numbers */
    driver_version: string;
    /** version of the driver as its vendor publishes it */
    driver_version_marketing: string;
    /** date of the driver, YYYY-MM-DD */
    driver_date: string;
    /** company that provides the driver */
    driver_provider: string;
    /** file name of the driver's INF */
    driver_inf: string;
    /** name of the driver's service */
    service: string;
    /** Windows' problem code of the device (CM_PROB_); 0: none */
    problem_code: number;
    /** name of the problem code; none for 0 */
    problem: string;
    /** D0, D1, D2 or D3; reading it does not wake the card */
    power_state: string;
    /** whether the card is part of the processor or chipset */
    integrated: boolean;
    /** video memory of the card (bytes) */
    dedicated_memory_bytes: number;
    /** system memory reserved for the card (bytes) */
    dedicated_system_memory_bytes: number;
    /** most system memory that the card may use (bytes) */
    shared_memory_bytes: number;
    /** video memory as the vendor's driver reports it (bytes) */
    board_memory_bytes: number;
    /** type of the video memory, such as GDDR6 */
    memory_type: string;
    /** width of the bus to the video memory (bits) */
    memory_bus_width_bits: number;
    /** highest clock of the video memory (MHz) */
    memory_clock_max_mhz: number;
    /** highest clock of the cores (MHz) */
    core_clock_max_mhz: number;
    /** number of cores */
    core_count: number;
    /** CUDA compute capability, major.minor */
    compute_capability: string;
    /** current PCI Express generation; lower while the card is idle */
    pcie_generation: number;
    /** highest PCI Express generation of the card */
    pcie_generation_max: number;
    /** current number of PCI Express lanes */
    pcie_lanes: number;
    /** highest number of PCI Express lanes of the card */
    pcie_lanes_max: number;
    /** version of the video BIOS */
    bios_version: string;
    /** serial number of the board */
    serial_number: string;
    /** unique identifier that the vendor assigned to the GPU */
    uuid: string;
    /** whether error correction (ECC) is enabled */
    ecc_enabled: boolean;
    /** corrected memory errors over the lifetime of the card */
    ecc_corrected_errors: number;
    /** uncorrected memory errors over the lifetime of the card */
    ecc_uncorrected_errors: number;
    /** temperature at which the card starts to slow down (Celsius) */
    temperature_slowdown_celsius: number;
    /** temperature at which the card shuts down (Celsius) */
    temperature_shutdown_celsius: number;
    /** the active displays */
    displays: Display[];
}
