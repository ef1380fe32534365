#include "VendorStates.h"

#include <algorithm>
#include <initializer_list>

#include "LikelyCause.h"
#include "SystemChecks.h"

namespace orvel::tools {

namespace {

constexpr VendorState::Word ok = {"ok", "nothing that was looked at keeps its records away"};
constexpr VendorState::Word noLibrary = {"no-library", "the library cannot be loaded"};
constexpr VendorState::Word noWmi = {"no-wmi", "WMI cannot be queried for what the vendor's run needs"};
constexpr VendorState::Word noCard = {"no-card", "WMI lists no adapter of this vendor"};
constexpr VendorState::Word noOpenCl = {"no-opencl", "opencl.dll cannot be loaded"};
constexpr VendorState::Word noOpenClDevice = {"no-opencl-device", "OpenCL does not list each adapter under WMI's name"};
constexpr VendorState::Word noDriver = {"no-driver", "a DLL of the vendor's display driver cannot be loaded"};
constexpr VendorState::Word unsupportedMemory = {"unsupported-memory-type",
                                                 "the library does not know the type of the computer's memory"};
constexpr VendorState::Word noDxgi = {"no-dxgi", "DXGI has no factory"};

/// What a vendor's run cannot do without, beyond what every vendor's run needs.
struct Needs {
    const char* Vendor;
    const char* PciVendor;
    bool Bios;
    bool OpenClDevice;
    std::vector<const char*> DriverDlls;
    bool (*IsMemoryKnown)(uint32_t type); // null where any will do
    bool Dxgi;
};

const std::vector<Needs>& Vendors()
{
    static const std::vector<Needs> vendors = {
        {"Intel", "8086", true, true, {}, HasTransferFactor, true},
        {"NVIDIA", "10DE", false, false, {"nvapi64.dll"}, HasMemoryName, false},
        {"AMD", "1002", true, false, {"atiadlxx.dll", "amdadlx64.dll"}, nullptr, true},
    };
    return vendors;
}

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

VendorState::Word StateOf(const Needs& needs, const Found& found)
{
    if (!found.Has("library")) {
        return noLibrary;
    }
    if (!found.All({"com", "wmi-namespace", "wmi-video-controller", "wmi-physical-memory"}) ||
        (needs.Bios && !found.Has("wmi-bios"))) {
        return noWmi;
    }
    if (NamesOfAdapters(needs.PciVendor).empty()) {
        return noCard;
    }
    if (!found.Has("opencl.dll")) {
        return noOpenCl;
    }
    if (needs.OpenClDevice && !found.Has("opencl-intel")) {
        return noOpenClDevice;
    }
    if (!std::all_of(needs.DriverDlls.begin(), needs.DriverDlls.end(), [&](const char* dll) { return found.Has(dll); })) {
        return noDriver;
    }
    if (needs.IsMemoryKnown && !needs.IsMemoryKnown(MemoryType())) {
        return unsupportedMemory;
    }
    return needs.Dxgi && !found.Has("dxgi") ? noDxgi : ok;
}

} // namespace

std::vector<VendorState> StatesOfVendors(const std::vector<Check>& checks)
{
    std::vector<VendorState> states;
    for (const Needs& needs : Vendors()) {
        states.push_back({needs.Vendor, StateOf(needs, Found(checks))});
    }
    return states;
}

} // namespace orvel::tools
