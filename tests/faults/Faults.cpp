#include "Faults.h"

#include <stdexcept>

#include "support/Enumerated.h"
#include "vendors/Vendors.h"

namespace orvel::tests {

using shared::enumeration::vendors;

namespace {

/// Whether the position still exists after an earlier fault; "-" is the end of an array.
bool IsThere(const Json& machine, const Edit& edit)
{
    const Pointer parent = edit.Path.parent_pointer();
    if (!machine.contains(parent) || !machine[parent].is_structured()) {
        return false;
    }
    if (machine[parent].is_object() && machine[parent].contains("status") && edit.Path.back() != "enabled") {
        return parent.back() == "dwm"; // a failing call has no members
    }
    return edit.Path.back() == "-" || edit.Value || machine.contains(edit.Path);
}

/// The WMI rows of a manufacturer's adapters.
Json AdaptersOf(const Json& machine, const std::string& manufacturer)
{
    const Pointer adapters("/wmi/classes/Win32_VideoController");
    Json found = Json::array();
    for (const Json& row : machine.contains(adapters) ? machine[adapters] : Json::array()) {
        if (VendorOfText(row.value("PNPDeviceID", Json()).dump()) == manufacturer) {
            found.push_back(row);
        }
    }
    return found;
}

void AddIfGuest(Json& machine, const std::string& manufacturer)
{
    if (!AdaptersOf(machine, manufacturer).empty()) {
        return;
    }
    for (const std::string& name : MachineNames()) {
        const Json lender = Machine(name);
        const Json rows = AdaptersOf(lender, manufacturer);
        if (!rows.empty()) {
            machine["wmi"]["classes"]["Win32_VideoController"].push_back(rows[0]);
            machine.insert(lender.begin(), lender.end()); // interfaces that the workstation lacks
            return;
        }
    }
    throw std::runtime_error("no file in machines/ has a card of " + manufacturer);
}

} // namespace

Consequence operator+(Consequence left, const Consequence& right)
{
    left.Changed.insert(right.Changed.begin(), right.Changed.end());
    left.Gone.insert(right.Gone.begin(), right.Gone.end());
    left.Alive.insert(right.Alive.begin(), right.Alive.end());
    if (right.Leaves) {
        left.Leaves = right.Leaves;
    }
    return left;
}

Consequence Nothing()
{
    return {};
}

Consequence Lost(std::set<std::string> manufacturers)
{
    Consequence result;
    result.Gone = std::move(manufacturers);
    return result;
}

Consequence Other(const std::string& manufacturer, Fields fields)
{
    Consequence result;
    result.Changed[manufacturer] = std::move(fields);
    return result;
}

Consequence StaysAlive(const std::string& api)
{
    Consequence result;
    result.Alive.insert(api);
    return result;
}

Consequence Thrown(long status, std::set<std::string> lost)
{
    Consequence result = Lost(std::move(lost));
    result.Leaves = status;
    return result;
}

void Apply(const Fault& fault, Json& machine)
{
    for (const Edit& edit : fault.Edits) {
        if (!IsThere(machine, edit)) {
            continue;
        }
        if (edit.Value) {
            machine[edit.Path] = *edit.Value;
            continue;
        }
        Json& parent = machine[edit.Path.parent_pointer()];
        if (parent.is_array()) {
            parent.erase(std::stoul(edit.Path.back()));
        } else {
            parent.erase(edit.Path.back());
        }
    }
}

Fault Setting(const Pointer& path, const Json& value, const Consequence& expected)
{
    return {path.to_string() + " = " + value.dump(), {{path, value}}, expected};
}

Fault Removing(const Pointer& path, const Consequence& expected)
{
    return {"without " + path.to_string(), {{path, std::nullopt}}, expected};
}

Fault Hiding(const std::string& api, const std::string& function, const Consequence& expected)
{
    const std::string list = api == "nvapi" ? "unresolved" : "missing";
    return Setting(Pointer("/" + api + "/" + list + "/-"), function, expected);
}

Json Status(long status)
{
    return {{"status", status}};
}

Json StatusAndValue(long status, const Json& value)
{
    return {{"status", status}, {"value", value}};
}

Json StatusAndRubbish(long status)
{
    return {{"status", status}, {"writes", "rubbish"}};
}

std::optional<std::string> VendorOfText(const std::string& text)
{
    for (const auto& vendor : vendors) {
        if (text.find("VEN_" + std::string(vendor.PciId)) != std::string::npos) {
            return std::string(vendor.Manufacturer);
        }
    }
    return std::nullopt;
}

bool IsGuest(const std::string& manufacturer)
{
    return AdaptersOf(Machine("workstation"), manufacturer).empty();
}

Json HealthyWorkstation()
{
    Json machine = Machine("workstation");
    for (const auto& vendor : vendors) {
        AddIfGuest(machine, std::string(vendor.Manufacturer));
    }
    machine["wmi"]["failures"] = Json::array();
    const std::string intelKey =
        "SYSTEM\\CurrentControlSet\\Enum\\PCI\\VEN_8086&DEV_4680&SUBSYS_86941043&REV_0C\\3&11583659&0&10";
    machine["registry"][intelKey]["LocationInformation"] = "PCI bus 3, device 2, function 0;(3,2,0)";
    machine["opencl"].update({{"missing", Json::array()}});
    machine["opencl"]["platforms"][2]["devices"][0]["CL_DEVICE_NAME"] = "AMD Radeon RX 6800 XT";
    machine["nvapi"].update({{"unresolved", Json::array()}, {"0xD2D25687", {2, 2}}});
    machine["nvapi"]["gpus"][0].update(
        {{"NvAPI_GPU_GetMemoryInfoEx", {{"offset32", 17133731840}, {"offset40", 12079595520}}},
         {"NvAPI_GPU_GetECCStatusInfo", {{"supported", true}, {"enabled", true}}},
         {"NvAPI_GPU_GetECCErrorInfo", {{"single", 3}, {"double", 4}}}});
    machine["nvml"]["devices"][0]["nvmlDeviceGetSerial"] = "0324518901234";
    machine["adl"]["missing"] = Json::array();
    machine["adl"]["adapters"]["0"].update({{"ADL2_Adapter_Crossfire_Get", {{"iSupported", 1}}},
                                            {"ADL_Overdrive5_CurrentActivity_Get", {{"iMaximumBusLanes", 16}}},
                                            {"ADL2_Workstation_ECC_Caps", 1},
                                            {"ADL2_Workstation_ECC_Get", {{"default", 1}, {"current", 2}, {"desired", 2}}},
                                            {"ADL2_Workstation_ECCData_Get", {{"iSec", 5}, {"iDed", 7}}}});
    machine["adlx"]["missing"] = Json::array();
    return machine;
}

std::vector<Fault> AllFaults()
{
    std::vector<Fault> all = WmiQueryFaults(Enumerate(HealthyWorkstation()).Trace);
    for (const auto& more :
         {WmiRowFaults(), SystemFaults(), OpenClFaults(), NvapiFaults(), NvmlFaults(), AdlFaults(), AdlxFaults()}) {
        all.insert(all.end(), more.begin(), more.end());
    }
    return all;
}

} // namespace orvel::tests
