#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace orvel::shared::enumeration {

/// What is known of a vendor without its enumerator. The run, the tool and the tests read it here.
struct Vendor {
    /// What the type of the machine's memory has to have: a name, or the transfer factor of a bandwidth too.
    enum class Memory { Any, Named, WithTransferFactor };

    std::string_view Name;         ///< for people, and in properties/properties.toml
    std::string_view Manufacturer; ///< as the records have it
    std::string_view PciId;        ///< 4 hexadecimal digits
    std::string_view BeginsRun;    ///< the operation that logs first in each run; "" where none logs in every one
    bool HasOneRecord = false;     ///< whatever the number of its cards

    // What its run cannot do without, beyond WMI's adapters.
    std::array<std::string_view, 2> DriverDlls; ///< "" for none
    bool NeedsBios = false;                     ///< WMI's `Win32_Bios`
    bool NeedsOpenCl = false;                   ///< opencl.dll
    bool NeedsOpenClDevice = false;             ///< an OpenCL device for each adapter, of WMI's name
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
