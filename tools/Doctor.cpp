#include "Doctor.h"

#include <algorithm>
#include <sstream>

#include <nlohmann/json.hpp>

#include "LikelyCause.h"
#include "SystemChecks.h"
#include "TextLayout.h"
#include "VendorStates.h"

namespace orvel::tools {

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

Check Make(const char* name, const Finding& finding, CheckStatus whenMissing, const char* cost, const char* brings)
{
    return {name,  finding.IsFound ? CheckStatus::Found : whenMissing, finding.Path, finding.Version, finding.Detail, cost,
            brings};
}

void AddWmi(std::vector<Check>& checks)
{
    const char* windows = "it belongs to Windows; the WMI service or its repository may be damaged";
    checks.push_back(Make("com", FindCom(), CheckStatus::Stops, "WMI cannot be reached", "the host initialises it"));
    checks.push_back(
        Make("wmi-namespace", FindWmiNamespace(), CheckStatus::Stops, "no vendor's cards are enumerated", windows));
    checks.push_back(Make("wmi-bios", FindWmiClass("Win32_Bios"), CheckStatus::Limits,
                          "Intel's and AMD's cards are not enumerated", windows));
    checks.push_back(Make("wmi-video-controller", FindWmiClass("Win32_VideoController"), CheckStatus::Stops,
                          "no vendor's cards are enumerated", windows));
    checks.push_back(Make("wmi-physical-memory", FindWmiClass("Win32_PhysicalMemory"), CheckStatus::Stops,
                          "the enumeration ends with a status at the first card", windows));
    const uint32_t memoryType = MemoryType();
    const bool hasName = HasMemoryName(memoryType);
    checks.push_back(
        Make("memory-type", {hasName && HasTransferFactor(memoryType), "SMBIOS type " + std::to_string(memoryType)},
             CheckStatus::Limits,
             hasName ? "Intel's cards are not enumerated, and the MemoryBandwidth of AMD's is infinite"
                     : "Intel's and NVIDIA's cards are not enumerated, and the MemoryBandwidth of AMD's is infinite",
             hasName ? "nothing on this computer; the library knows no transfer factor for this type"
                     : "nothing on this computer; its memory is newer than the library's table, such as DDR5"));
}

void AddLibraries(std::vector<Check>& checks, const LibraryLoad& load)
{
    const auto missingFor = [](const char* vendorId) {
        return NamesOfAdapters(vendorId).empty() ? CheckStatus::NotNeeded : CheckStatus::Limits;
    };
    const CheckStatus nvidia = missingFor("10DE");
    const CheckStatus amd = missingFor("1002");
    const char* nvidiaDriver = "NVIDIA's display driver";
    const char* amdDriver = "AMD's display driver";
    checks.push_back(Make("opencl.dll", FindDll("opencl.dll"), CheckStatus::Stops, "no vendor's cards are enumerated",
                          "any vendor's display driver"));
    const std::string withoutOpenCl = IntelAdaptersWithoutOpenCl();
    checks.push_back(Make("opencl-intel", {withoutOpenCl.empty(), withoutOpenCl}, CheckStatus::Limits,
                          "Intel's cards are not enumerated: OpenCL has to list them under WMI's names",
                          "Intel's display driver"));
    Finding nvml = FindDll("nvml.dll");
    if (nvml.IsFound) {
        nvml.Detail = load.Substituted;
    }
    checks.push_back(Make("nvml.dll", nvml, CheckStatus::Stops, "the library cannot be loaded",
                          "NVIDIA's display driver, or the substitute from the folder \"fallback\""));
    checks.push_back(Make("nvapi64.dll", FindDll("nvapi64.dll"), nvidia, "NVIDIA's card is not enumerated", nvidiaDriver));
    checks.push_back(Make("atiadlxx.dll", FindDll("atiadlxx.dll"), amd, "AMD's cards are not enumerated", amdDriver));
    checks.push_back(Make("amdadlx64.dll", FindDll("amdadlx64.dll"), amd, "AMD's cards are not enumerated", amdDriver));
}

void AddWindows(std::vector<Check>& checks)
{
    checks.push_back(Make("dxgi", FindDxgi(), CheckStatus::Limits, "Intel's and AMD's cards are not enumerated",
                          "it belongs to Windows; a display has to be there"));
    checks.push_back(Make("registry-pci", FindRegistryKey("SYSTEM\\CurrentControlSet\\Enum\\PCI\\"), CheckStatus::Limits,
                          "BusId of Intel's and AMD's cards is 0", "it belongs to Windows"));
    checks.push_back(Make("registry-video", FindRegistryKey("SYSTEM\\CurrentControlSet\\Control\\Video"),
                          CheckStatus::Limits, "BiosVersion of Intel's and AMD's cards is empty", "it belongs to Windows"));
}

} // namespace

Diagnosis Diagnose(const LibraryLoad& load)
{
    std::vector<Check> checks;
    AddWmi(checks);
    AddLibraries(checks, load);
    AddWindows(checks);
    const Finding library = load.Problem ? Finding{false, *load.Problem} : FindDll("orvel-graphic-cards-enumeration.dll");
    checks.push_back(
        Make("library", library, CheckStatus::Stops, "nothing can be enumerated", "it belongs beside this program"));
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
            WriteWrapped(out, "without it: " + check.Cost, 8);
            WriteWrapped(out, "what brings it: " + check.Brings, 8);
        }
    }
    out << '\n';
    for (const VendorState& vendor : diagnosis.Vendors) {
        WriteEntry(out, vendor.Vendor, std::string(vendor.State.Name) + " (" + vendor.State.Meaning + ")");
    }
    constexpr const char* verdicts[] = {"All is well.", "Something limits the records.", "Nothing can be enumerated."};
    out << '\n' << Bold(verdicts[DoctorStatus(diagnosis.Checks)], style.IsColoured) << '\n';
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
                                    {"cost", check.Cost},
                                    {"brings", check.Brings}});
    }
    for (const VendorState& vendor : diagnosis.Vendors) {
        object["vendors"].push_back(
            {{"name", vendor.Vendor}, {"status", vendor.State.Name}, {"meaning", vendor.State.Meaning}});
    }
    return object.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

} // namespace orvel::tools
