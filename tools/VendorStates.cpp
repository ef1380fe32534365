#include "VendorStates.h"

#include <algorithm>
#include <initializer_list>

#include "LikelyCause.h"
#include "SystemChecks.h"
#include "vendors/Vendors.h"

namespace orvel::tools {

using shared::enumeration::Vendor;
using shared::enumeration::vendors;

namespace {

constexpr VendorState::Word ok = {"ok", "no check found a reason for missing records"};
constexpr VendorState::Word noLibrary = {"no-library", "the library cannot be loaded"};
constexpr VendorState::Word noWmi = {"no-wmi", "WMI cannot be queried for what the vendor's run needs"};
constexpr VendorState::Word noCard = {"no-card", "WMI lists no adapter of this vendor"};
constexpr VendorState::Word noOpenCl = {"no-opencl", "opencl.dll cannot be loaded"};
constexpr VendorState::Word noOpenClDevice = {"no-opencl-device", "OpenCL does not list each adapter under WMI's name"};
constexpr VendorState::Word noDriver = {"no-driver", "a DLL of the vendor's display driver cannot be loaded"};
constexpr VendorState::Word unsupportedMemory = {"unsupported-memory-type",
                                                 "the library does not know the type of the computer's memory"};
constexpr VendorState::Word noDxgi = {"no-dxgi", "no DXGI factory can be created"};

class Found {
public:
    explicit Found(const std::vector<Check>& itsChecks) : checks(itsChecks) {}

    bool All(std::initializer_list<const char*> names) const
    {
        return std::all_of(names.begin(), names.end(), [this](const char* name) { return Has(name); });
    }
    bool Has(const std::string& name) const
    {
        return std::any_of(checks.begin(), checks.end(),
                           [&name](const Check& check) { return check.Name == name && check.Status == CheckStatus::Found; });
    }

private:
    const std::vector<Check>& checks;
};

bool IsMemoryKnown(const Vendor& vendor)
{
    switch (vendor.KnownMemory) {
    case Vendor::Memory::Named:
        return HasMemoryName(MemoryType());
    case Vendor::Memory::WithTransferFactor:
        return HasTransferFactor(MemoryType());
    case Vendor::Memory::Any:
        break;
    }
    return true;
}

VendorState::Word StateOf(const Vendor& vendor, const Found& found)
{
    if (!found.Has("library")) {
        return noLibrary;
    }
    if (!found.All({"com", "wmi-namespace", "wmi-video-controller"}) ||
        (vendor.NeedsModules && !found.Has("wmi-physical-memory")) || (vendor.NeedsBios && !found.Has("wmi-bios"))) {
        return noWmi;
    }
    if (NamesOfAdapters(std::string(vendor.PciId)).empty()) {
        return noCard;
    }
    if (vendor.NeedsOpenCl && !found.Has("opencl.dll")) {
        return noOpenCl;
    }
    if (vendor.NeedsOpenClDevice && !found.Has("opencl-intel")) {
        return noOpenClDevice;
    }
    const auto isFound = [&found](std::string_view dll) { return dll.empty() || found.Has(std::string(dll)); };
    if (!std::all_of(vendor.DriverDlls.begin(), vendor.DriverDlls.end(), isFound)) {
        return noDriver;
    }
    if (!IsMemoryKnown(vendor)) {
        return unsupportedMemory;
    }
    return vendor.NeedsDxgi && !found.Has("dxgi") ? noDxgi : ok;
}

} // namespace

std::vector<VendorState> StatesOfVendors(const std::vector<Check>& checks)
{
    std::vector<VendorState> states;
    for (const Vendor& vendor : vendors) {
        states.push_back({std::string(vendor.Name), StateOf(vendor, Found(checks))});
    }
    return states;
}

} // namespace orvel::tools
