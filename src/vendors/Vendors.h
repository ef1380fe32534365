#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace orvel::shared::enumeration {

/// The description of a vendor, for the run, the tool and the tests.
struct Vendor {
    /// What the library must know of the machine's memory type: nothing, its name, or also its transfer factor.
    enum class Memory { Any, Named, WithTransferFactor };

    std::string_view Name;         ///< in texts, and in properties/properties.toml
    std::string_view Manufacturer; ///< in the records
    std::string_view PciId;        ///< 4 hexadecimal digits
    std::string_view BeginsRun;    ///< the operation that logs first in each run; "" if there is none
    bool HasOneRecord = false;     ///< for any number of cards

    // What its run requires, in addition to WMI's adapters.
    std::array<std::string_view, 2> DriverDlls; ///< "" for none
    bool NeedsBios = false;                     ///< WMI's `Win32_Bios`
    bool NeedsOpenCl = false;                   ///< opencl.dll
    bool NeedsOpenClDevice = false;             ///< an OpenCL device with WMI's name for each adapter
    bool NeedsModules = false;                  ///< WMI's `Win32_PhysicalMemory`
    Memory KnownMemory = Memory::Any;
    bool NeedsDxgi = false;
};

/// In the order of the run.
inline constexpr Vendor vendors[] = {
    {.Name = "Intel",
     .Manufacturer = "Intel",
     .PciId = "8086",
     .BeginsRun = "",
     .DriverDlls = {},
     .NeedsBios = true,
     .NeedsOpenCl = true,
     .NeedsOpenClDevice = true,
     .NeedsModules = true,
     .KnownMemory = Vendor::Memory::WithTransferFactor,
     .NeedsDxgi = true},
    {.Name = "NVIDIA",
     .Manufacturer = "Nvidia",
     .PciId = "10DE",
     .BeginsRun = "NvapiClient::NvapiClient",
     .HasOneRecord = true,
     .DriverDlls = {"nvapi64.dll"},
     .NeedsOpenCl = true,
     .NeedsModules = true,
     .KnownMemory = Vendor::Memory::Named},
    {.Name = "AMD",
     .Manufacturer = "AMD",
     .PciId = "1002",
     .BeginsRun = "ADLWrapper::ADLWrapper",
     .DriverDlls = {"atiadlxx.dll", "amdadlx64.dll"},
     .NeedsBios = true,
     .NeedsOpenCl = true,
     .NeedsModules = true,
     .NeedsDxgi = true},
};

/// The vendor whose records have this manufacturer; null for none.
constexpr const Vendor* VendorOf(std::string_view manufacturer)
{
    const auto found = std::find_if(std::begin(vendors), std::end(vendors),
                                    [&](const Vendor& vendor) { return vendor.Manufacturer == manufacturer; });
    return found == std::end(vendors) ? nullptr : found;
}

} // namespace orvel::shared::enumeration
