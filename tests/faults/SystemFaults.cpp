// Faults of the desktop window manager, DXGI, the registry and OpenCL, which several vendors use.

#include "Faults.h"

namespace orvel::tests {

namespace {

const std::string intel = "Intel";
const std::string nvidia = "Nvidia";
const std::string amd = "AMD";

const std::string pciRoot = "SYSTEM\\CurrentControlSet\\Enum\\PCI\\VEN_";
const std::string videoRoot = "SYSTEM\\CurrentControlSet\\Control\\Video\\";

/// The vendor whose record is read from this registry key of the workstation; "" for none.
std::string OwnerOf(const std::string& key)
{
    if (key.starts_with(videoRoot)) {
        return key.starts_with(videoRoot + "{6C7C7D60") ? intel : amd;
    }
    return key.starts_with(pciRoot + "8086") ? intel : key.starts_with(pciRoot + "1002") ? amd : "";
}

void AddKeyFaults(std::vector<Fault>& faults, const std::string& key, const Json& values)
{
    const std::string owner = OwnerOf(key);
    const std::string field = key.starts_with(videoRoot) ? "BiosVersion" : "BusId";
    const Consequence expected = owner.empty() ? Nothing() : Other(owner, {field});
    const Pointer path = Pointer("/registry") / key;
    faults.push_back(Removing(path, expected));
    faults.push_back(Setting(path, Json::object(), expected));
    for (const auto& value : values.items()) {
        faults.push_back(Removing(path / value.key(), expected));
    }
    if (field == "BusId") { // the conversion of a text without a bus number throws
        const Consequence ends = owner.empty() ? Nothing() : Lost({owner});
        faults.push_back(Setting(path / "LocationInformation", "Internal High Definition Audio Bus", ends));
        faults.push_back(Setting(path / "LocationInformation", "(99999999999,0,0)", ends));
    }
}

/// The effect if the devices of every OpenCL platform, or of one platform, cannot be listed.
const Consequence noDevices = Lost({intel}) + Other(amd, {"ChipName"});
const std::vector<Consequence> withoutDevicesOfPlatform = {Nothing(), Lost({intel}), Other(amd, {"ChipName"})};

/// The library queries only the name of NVIDIA's device; of AMD's, the name and the vendor, then the name again.
Consequence OfParameter(size_t platform, const std::string& parameter)
{
    const bool isIdentity = parameter == "CL_DEVICE_NAME" || parameter == "CL_DEVICE_VENDOR_ID";
    return platform == 1 || isIdentity ? withoutDevicesOfPlatform[platform] : Nothing();
}

void AddPlatformFaults(std::vector<Fault>& faults, size_t index, const Json& platform)
{
    const Pointer path = Pointer("/opencl/platforms") / index;
    const Consequence& expected = withoutDevicesOfPlatform[index];
    faults.push_back(Setting(path / "devices_count", -5, expected));
    faults.push_back(Setting(path / "devices_count", StatusAndValue(-5, 1), Nothing())); // the count that it wrote is used
    faults.push_back(Setting(path / "devices_fetch", -5, expected));
    faults.push_back(Setting(path / "devices_fetch", StatusAndRubbish(-5), expected));
    faults.push_back(Setting(path / "devices_count", StatusAndRubbish(-5), expected)); // an implausible count
    faults.push_back(Setting(path / "devices", Json::array(), expected));
    faults.push_back(Setting(path / "devices" / 0 / "type", "cpu", expected));
    for (const auto& [name, value] : platform["devices"][0].items()) {
        if (name != "type") {
            const Pointer parameter = path / "devices" / 0 / name;
            faults.push_back(Setting(parameter, Status(-30), OfParameter(index, name)));
            faults.push_back(Setting(parameter, StatusAndRubbish(-30), OfParameter(index, name)));
            faults.push_back(Setting(parameter, StatusAndValue(-5, value), OfParameter(index, name)));
            Json valueOfRubbish = StatusAndRubbish(-5);
            valueOfRubbish["value"] = value; // for its size
            faults.push_back(Setting(parameter, valueOfRubbish, OfParameter(index, name)));
            faults.push_back(Removing(parameter, OfParameter(index, name)));
        }
    }
}

} // namespace

std::vector<Fault> SystemFaults()
{
    std::vector<Fault> faults;
    const Consequence noAero =
        Other(intel, {"IsAeroEnabled"}) + Other(nvidia, {"IsAeroEnabled"}) + Other(amd, {"IsAeroEnabled"});
    faults.push_back(Setting(Pointer("/dwm/status"), "0x80263001", noAero));
    faults.push_back(Setting(Pointer("/dwm/enabled"), false, noAero));

    const Consequence noFactory = Lost({intel, amd}); // the shared memory is then a text without digits
    faults.push_back(Removing(Pointer("/dxgi"), noFactory));
    faults.push_back(Setting(Pointer("/dxgi/factory"), "0x887A0004", noFactory));
    const std::vector<std::string> vendorOfAdapter = {amd, "", intel, ""};
    for (size_t adapter = 0; adapter < vendorOfAdapter.size(); ++adapter) {
        const std::string& vendor = vendorOfAdapter[adapter];
        faults.push_back(
            Removing(Pointer("/dxgi/adapters") / adapter, vendor.empty() ? Nothing() : Other(vendor, {"MemorySharedSize"})));
    }

    faults.push_back(
        Removing(Pointer("/registry"), Other(intel, {"BusId", "BiosVersion"}) + Other(amd, {"BusId", "BiosVersion"})));
    const Json registry = HealthyWorkstation()["registry"];
    for (const auto& [key, values] : registry.items()) {
        AddKeyFaults(faults, key, values);
    }
    return faults;
}

std::vector<Fault> OpenClFaults()
{
    std::vector<Fault> faults;
    faults.push_back(Removing(Pointer("/opencl"), Lost({intel, nvidia, amd})));
    for (const char* function : {"clGetPlatformIDs", "clGetDeviceIDs", "clGetDeviceInfo"}) {
        faults.push_back(Hiding("opencl", function, noDevices));
    }
    faults.push_back(Setting(Pointer("/opencl/platforms_count"), -1001, noDevices));
    faults.push_back(Setting(Pointer("/opencl/platforms_count"), StatusAndValue(-1001, 3), Nothing()));
    faults.push_back(Setting(Pointer("/opencl/platforms_fetch"), -1001, noDevices));
    faults.push_back(Setting(Pointer("/opencl/platforms_fetch"), StatusAndRubbish(-1001), noDevices));
    faults.push_back(Setting(Pointer("/opencl/platforms_count"), StatusAndRubbish(-1001), noDevices));
    faults.push_back(Setting(Pointer("/opencl/platforms"), Json::array(), noDevices));
    const Json platforms = HealthyWorkstation()["opencl"]["platforms"];
    for (size_t index = 0; index < platforms.size(); ++index) {
        AddPlatformFaults(faults, index, platforms[index]);
    }
    return faults;
}

} // namespace orvel::tests
