#include "Doctor.h"

#include <algorithm>
#include <iterator>
#include <sstream>
#include <string_view>

#include <nlohmann/json.hpp>

#include "LikelyCause.h"
#include "SystemChecks.h"
#include "TextLayout.h"
#include "VendorStates.h"
#include "vendors/Vendors.h"

namespace orvel::tools {

using shared::enumeration::Vendor;
using shared::enumeration::vendors;

namespace {

const char* NameOf(CheckStatus status)
{
    switch (status) {
    case CheckStatus::Found:
        return "found";
    case CheckStatus::NotNeeded:
        return "not needed";
    case CheckStatus::Limits:
        return "limits the records";
    case CheckStatus::Stops:
        return "nothing can be enumerated";
    }
    return "";
}

const char* KeyOf(CheckStatus status)
{
    switch (status) {
    case CheckStatus::Found:
        return "found";
    case CheckStatus::NotNeeded:
        return "not-needed";
    case CheckStatus::Limits:
        return "limits";
    case CheckStatus::Stops:
        return "stops";
    }
    return "";
}

Check Make(const std::string& name, const Finding& finding, CheckStatus whenMissing, const std::string& impact,
           const std::string& providedBy)
{
    return {
        name,      finding.IsFound ? CheckStatus::Found : whenMissing, finding.Path, finding.Version, finding.Detail, impact,
        providedBy};
}

/// The effect of a missing dependency of some vendors: "Intel's and AMD's cards are not enumerated".
struct Loss {
    CheckStatus Status;
    std::string Impact;
};

template <typename Predicate>
Loss LossOf(Predicate needs)
{
    std::vector<std::string> names;
    for (const Vendor& vendor : vendors) {
        if (needs(vendor)) {
            names.push_back(std::string(vendor.Name) + "'s");
        }
    }
    if (names.size() == std::size(vendors)) {
        return {CheckStatus::Stops, "no vendor's cards are enumerated"};
    }
    std::string listed;
    for (size_t i = 0; i < names.size(); ++i) {
        listed += (i == 0 ? "" : i + 1 == names.size() ? " and " : ", ") + names[i];
    }
    return {CheckStatus::Limits, listed + " cards are not enumerated"};
}

void AddWmi(std::vector<Check>& checks)
{
    const char* windows = "Windows; the WMI service or its repository may be damaged";
    checks.push_back(Make("com", FindCom(), CheckStatus::Stops, "WMI is not available", "the host (CoInitializeEx)"));
    checks.push_back(
        Make("wmi-namespace", FindWmiNamespace(), CheckStatus::Stops, "no vendor's cards are enumerated", windows));
    const Loss noBios = LossOf([](const Vendor& vendor) { return vendor.NeedsBios; });
    checks.push_back(Make("wmi-bios", FindWmiClass("Win32_Bios"), noBios.Status, noBios.Impact, windows));
    checks.push_back(Make("wmi-video-controller", FindWmiClass("Win32_VideoController"), CheckStatus::Stops,
                          "no vendor's cards are enumerated", windows));
    checks.push_back(Make("wmi-physical-memory", FindWmiClass("Win32_PhysicalMemory"), CheckStatus::Stops,
                          "the enumeration throws at the first card", windows));
    const uint32_t memoryType = MemoryType();
    const bool hasName = HasMemoryName(memoryType);
    checks.push_back(Make("memory-type",
                          {hasName && HasTransferFactor(memoryType), "SMBIOS type " + std::to_string(memoryType)},
                          CheckStatus::Limits,
                          LossOf([hasName](const Vendor& vendor) {
                              return vendor.KnownMemory == Vendor::Memory::WithTransferFactor ||
                                     (vendor.KnownMemory == Vendor::Memory::Named && !hasName);
                          }).Impact +
                              ", and MemoryBandwidth of AMD's cards is infinite",
                          hasName ? "nothing on this computer; the library has no transfer factor for this type"
                                  : "nothing on this computer; its memory is newer than the library's table, such as DDR5"));
}

void AddLibraries(std::vector<Check>& checks, const LibraryLoad& load)
{
    const Loss noOpenCl = LossOf([](const Vendor& vendor) { return vendor.NeedsOpenCl; });
    checks.push_back(
        Make("opencl.dll", FindDll("opencl.dll"), noOpenCl.Status, noOpenCl.Impact, "any vendor's display driver"));
    const std::string withoutOpenCl = IntelAdaptersWithoutOpenCl();
    checks.push_back(Make("opencl-intel", {withoutOpenCl.empty(), withoutOpenCl}, CheckStatus::Limits,
                          "Intel's cards are not enumerated: OpenCL must list them under WMI's names",
                          "Intel's display driver"));
    Finding nvml = FindDll("nvml.dll");
    if (nvml.IsFound) {
        nvml.Detail = load.Substituted;
    }
    checks.push_back(Make("nvml.dll", nvml, CheckStatus::Stops, "the library cannot be loaded",
                          "NVIDIA's display driver, or the substitute from the folder \"fallback\""));
    for (const Vendor& vendor : vendors) {
        const std::string name(vendor.Name);
        const CheckStatus missing =
            NamesOfAdapters(std::string(vendor.PciId)).empty() ? CheckStatus::NotNeeded : CheckStatus::Limits;
        for (const std::string_view dllName : vendor.DriverDlls) {
            if (const std::string dll(dllName); !dll.empty()) {
                checks.push_back(
                    Make(dll, FindDll(dll), missing,
                         name + (vendor.HasOneRecord ? "'s card is not enumerated" : "'s cards are not enumerated"),
                         name + "'s display driver"));
            }
        }
    }
}

void AddWindows(std::vector<Check>& checks)
{
    const Loss noDxgi = LossOf([](const Vendor& vendor) { return vendor.NeedsDxgi; });
    checks.push_back(Make("dxgi", FindDxgi(), noDxgi.Status, noDxgi.Impact, "Windows; needs a display"));
    checks.push_back(Make("registry-pci", FindRegistryKey("SYSTEM\\CurrentControlSet\\Enum\\PCI\\"), CheckStatus::Limits,
                          "BusId of Intel's and AMD's cards is 0", "Windows"));
    checks.push_back(Make("registry-video", FindRegistryKey("SYSTEM\\CurrentControlSet\\Control\\Video"),
                          CheckStatus::Limits, "BiosVersion of Intel's and AMD's cards is empty", "Windows"));
}

} // namespace

Diagnosis Diagnose(const LibraryLoad& load)
{
    std::vector<Check> checks;
    AddWmi(checks);
    AddLibraries(checks, load);
    AddWindows(checks);
    const Finding library = load.Problem ? Finding{false, *load.Problem} : FindDll("orvel-graphic-cards-enumeration.dll");
    checks.push_back(Make("library", library, CheckStatus::Stops, "nothing can be enumerated",
                          "the package's bin folder (must be beside this program)"));
    return {checks, StatesOfVendors(checks)};
}

int DoctorStatus(const std::vector<Check>& checks)
{
    const auto has = [&checks](CheckStatus status) {
        return std::any_of(checks.begin(), checks.end(), [status](const Check& check) { return check.Status == status; });
    };
    return has(CheckStatus::Stops) ? 2 : has(CheckStatus::Limits) ? 1 : 0;
}

std::string DoctorAsText(const Diagnosis& diagnosis, const TextStyle& style)
{
    std::ostringstream out;
    for (const Check& check : diagnosis.Checks) {
        const std::string detail = check.Detail.empty() ? "" : " (" + check.Detail + ")";
        WriteEntry(out, check.Name, NameOf(check.Status) + detail);
        if (!check.Path.empty()) {
            WriteWrapped(out, check.Path + (check.Version.empty() ? "" : ", version " + check.Version), 8);
        }
        if (check.Status != CheckStatus::Found) {
            WriteWrapped(out, "impact: " + check.Impact, 8);
            WriteWrapped(out, "provided by: " + check.ProvidedBy, 8);
        }
    }
    out << '\n';
    for (const VendorState& vendor : diagnosis.Vendors) {
        WriteEntry(out, vendor.Vendor, std::string(vendor.State.Name) + " (" + vendor.State.Meaning + ")");
    }
    constexpr const char* verdicts[] = {"Nothing is missing.", "Something limits the records.",
                                        "Nothing can be enumerated."};
    out << '\n' << Bold(verdicts[DoctorStatus(diagnosis.Checks)], style.IsColoured) << '\n';
    if (DoctorStatus(diagnosis.Checks) != 0) {
        out << "For a bug report, record this computer with --record FILE; see docs/bug-reports.md.\n";
    }
    return out.str();
}

std::string DoctorAsJson(const Diagnosis& diagnosis)
{
    nlohmann::ordered_json object = {{"schema", 1},
                                     {"status", DoctorStatus(diagnosis.Checks)},
                                     {"checks", nlohmann::ordered_json::array()},
                                     {"vendors", nlohmann::ordered_json::array()}};
    for (const Check& check : diagnosis.Checks) {
        object["checks"].push_back({{"name", check.Name},
                                    {"status", KeyOf(check.Status)},
                                    {"path", check.Path},
                                    {"version", check.Version},
                                    {"detail", check.Detail},
                                    {"impact", check.Impact},
                                    {"provided_by", check.ProvidedBy}});
    }
    for (const VendorState& vendor : diagnosis.Vendors) {
        object["vendors"].push_back(
            {{"name", vendor.Vendor}, {"status", vendor.State.Name}, {"meaning", vendor.State.Meaning}});
    }
    return object.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

} // namespace orvel::tools
