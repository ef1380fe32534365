// A failed query for a vendor's adapters ends that vendor's run. A failed query for the memory modules is thrown as a bare
// status and ends the following vendors' runs too. A property that cannot be read has its default in the record, and ends
// the run only if a lookup or conversion fails for the default.

#include "Faults.h"

#include <stdexcept>

#include "vendors/Vendors.h"

namespace orvel::tests {

using shared::enumeration::VendorOf;
using shared::enumeration::vendors;

namespace {

constexpr long failed = static_cast<long>(0x80041001);       // WBEM_E_FAILED
constexpr long invalidClass = static_cast<long>(0x80041010); // WBEM_E_INVALID_CLASS

const std::string intel = "Intel";
const std::string nvidia = "Nvidia";
const std::string amd = "AMD";

/// The vendor whose run sends a query; a run is recognised by the query for the vendor's adapters. Each query is sent once,
/// by the first vendor that needs its result.
struct Progress {
    std::string Vendor = std::string(vendors[0].Manufacturer);
    std::map<std::string, int> Seen; ///< queries so far, by text

    void Take(const std::string& line) { Vendor = VendorOfText(line).value_or(Vendor); }
};

/// The vendor and those that run after it.
std::set<std::string> FromOn(const std::string& manufacturer)
{
    std::set<std::string> result;
    for (const auto* vendor = VendorOf(manufacturer); vendor != std::end(vendors); ++vendor) {
        result.emplace(vendor->Manufacturer);
    }
    return result;
}

Consequence OfQuery(const std::string& wql, const std::string& vendor)
{
    if (wql.ends_with("FROM Win32_PhysicalMemory")) {
        return Thrown(failed, FromOn(vendor));
    }
    const bool leavesAdlx = vendor == amd && wql.find("Win32_VideoController") != std::string::npos;
    return leavesAdlx ? Lost({amd}) + StaysAlive("adlx") : Lost({vendor});
}

/// The field that an unreadable property changes, for properties that all three vendors treat alike; "" for none.
const std::map<std::string, std::string> commonFields = {
    {"ConfigManagerErrorCode", ""}, // the default is the healthy value
    {"ConfigManagerUserConfig", ""},
    {"CurrentHorizontalResolution", "CurrentResolution"},
    {"CurrentVerticalResolution", "CurrentResolution"},
    {"CurrentRefreshRate", "CurrentRefreshRate"},
    {"DriverDate", "DriverReleaseDate"},
    {"DriverVersion", "DriverVersion"},
    {"Status", "AdapterStatus"},
};

/// A property of the vendor's adapter cannot be read, but the query's condition matches it.
Consequence OfAdapter(const std::string& vendor, const std::string& property)
{
    if (IsGuest(vendor)) {
        return Nothing();
    }
    if (property == "Availability") {
        return Lost({vendor}); // code 0 has no name
    }
    if (property == "AdapterRAM") { // Intel converts the text to a number
        return vendor == intel ? Lost({intel}) : Other(vendor, {"AdapterRam"});
    }
    if (property == "Name") { // the key for finding Intel's OpenCL device
        return vendor == intel ? Lost({intel}) : Other(vendor, {"AdapterName"});
    }
    if (property == "PNPDeviceID") {
        return vendor == intel ? Lost({intel}) : Nothing();
    }
    if (property == "AdapterDACType") {
        return vendor == intel ? Other(intel, {"GpuType"}) : Nothing();
    }
    const auto field = commonFields.find(property);
    if (field == commonFields.end()) {
        throw std::runtime_error("tests/faults/WmiFaults.cpp does not say what it costs that " + property +
                                 " cannot be read");
    }
    return field->second.empty() ? Nothing() : Other(vendor, {field->second});
}

/// The same if the condition does not match the property either: a row that is selected by the property is not found.
Consequence OfInvisible(const std::string& vendor, const std::string& property)
{
    const bool isSelectedBy = property == "PNPDeviceID" || (property == "Name" && vendor == amd);
    return isSelectedBy ? Lost({vendor}) : OfAdapter(vendor, property);
}

/// Type and width are the first module's, unless it reports none; the speed is the fastest module's before a failed read.
Consequence OfModule(size_t module, const std::string& property)
{
    if (module > 0) {
        return Nothing();
    }
    if (property == "SMBIOSMemoryType") {
        return Other(intel, {"MemoryType", "MemoryBandwidth", "TextureFillRate"}) + Other(nvidia, {"MemoryType"}) +
               Other(amd, {"MemoryType", "MemoryBandwidth"});
    }
    if (property == "Speed") {
        return Other(intel, {"MemoryClockMax", "MemoryBandwidth"}) + Other(amd, {"MemoryClockMax", "MemoryBandwidth"});
    }
    return Other(intel, {"MemoryBusWidth", "MemoryBandwidth", "PixelFillRate", "TextureFillRate"}) +
           Other(amd, {"MemoryBandwidth"});
}

void AddUnreadable(std::vector<Fault>& faults, const Pointer& property, const Consequence& expected)
{
    faults.push_back(Setting(property, Status(failed), expected));
    faults.push_back(Setting(property, nullptr, expected));
    faults.push_back(Removing(property, expected));
}

void AddAdapterFaults(std::vector<Fault>& faults, const Pointer& row, const std::string& vendor, const Json& properties)
{
    for (const auto& [name, value] : properties.items()) {
        AddUnreadable(faults, row / name, OfInvisible(vendor, name));
        if (value.is_string()) {
            faults.push_back(Setting(row / name, {{"where", value}, {"status", failed}}, OfAdapter(vendor, name)));
            faults.push_back(Setting(row / name, {{"where", value}, {"value", nullptr}}, OfAdapter(vendor, name)));
        }
    }
}

const Pointer classes("/wmi/classes");

void AddClassFaults(std::vector<Fault>& faults)
{
    const Consequence noSerial = Other(intel, {"GraphicsCardSn"}) + Other(amd, {"GraphicsCardSn"});
    faults.push_back(Removing(classes / "Win32_Bios", Lost({intel, amd})));
    faults.push_back(Setting(classes / "Win32_Bios", Json::array(), noSerial));
    // NVIDIA's run reads from the missing row, and the default availability code 0 has no name.
    faults.push_back(Removing(classes / "Win32_VideoController", Lost({intel, nvidia, amd}) + StaysAlive("adlx")));
    faults.push_back(Setting(classes / "Win32_VideoController", Json::array(), Lost({intel, nvidia, amd})));
    faults.push_back(Removing(classes / "Win32_PhysicalMemory", Thrown(invalidClass, {intel, nvidia, amd})));
    faults.push_back(Setting(classes / "Win32_PhysicalMemory", Json::array(),
                             Other(intel, {"MemoryType", "MemoryClockMax", "MemoryBusWidth", "MemoryBandwidth",
                                           "PixelFillRate", "TextureFillRate"}) +
                                 Other(nvidia, {"MemoryType"}) +
                                 Other(amd, {"MemoryType", "MemoryClockMax", "MemoryBandwidth"})));
}

} // namespace

std::vector<Fault> WmiQueryFaults(const std::vector<std::string>& healthyTrace)
{
    const std::string prefix = "wmi query ";
    std::vector<Fault> faults;
    Progress progress;
    for (const std::string& line : healthyTrace) {
        progress.Take(line);
        if (!line.starts_with(prefix)) {
            continue;
        }
        const std::string wql = line.substr(prefix.size());
        const Json failure = {{"contains", wql}, {"nth", ++progress.Seen[line]}, {"status", failed}};
        faults.push_back(Setting(Pointer("/wmi/failures/-"), failure, OfQuery(wql, progress.Vendor)));
    }
    return faults;
}

std::vector<Fault> WmiRowFaults()
{
    std::vector<Fault> faults;
    faults.push_back(Setting(Pointer("/wmi/connect"), failed, Lost({intel, nvidia, amd})));
    faults.push_back(Removing(Pointer("/wmi"), Lost({intel, nvidia, amd})));
    AddClassFaults(faults);
    const Json machine = HealthyWorkstation();
    const Consequence noSerial = Other(intel, {"GraphicsCardSn"}) + Other(amd, {"GraphicsCardSn"});
    AddUnreadable(faults, classes / "Win32_Bios" / 0 / "SerialNumber", noSerial);
    const Pointer adapters = classes / "Win32_VideoController";
    for (size_t row = 0; row < machine[adapters].size(); ++row) {
        const Json& properties = machine[adapters][row];
        AddAdapterFaults(faults, adapters / row, VendorOfText(properties["PNPDeviceID"]).value(), properties);
    }
    const Pointer modules = classes / "Win32_PhysicalMemory";
    for (size_t module = 0; module < machine[modules].size(); ++module) {
        for (const auto& property : machine[modules][module].items()) {
            AddUnreadable(faults, modules / module / property.key(), OfModule(module, property.key()));
        }
    }
    return faults;
}

} // namespace orvel::tests
