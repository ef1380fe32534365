#include "system/PciBusNumber.h"

#include <optional>
#include <vector>

#include "formulas/LocationText.h"
#include "formulas/NumberText.h"
#include "platform/Log.h"
#include "platform/Registry.h"

namespace orvel::shared::enumeration {

namespace {

constexpr char pciRoot[] = "SYSTEM\\CurrentControlSet\\Enum\\PCI\\";
constexpr DWORD nameCharacters = 255;

LSTATUS OpenMachineKey(const std::string& path, RegistryKey& key)
{
    return OpenKey(HKEY_LOCAL_MACHINE, path.c_str(), key);
}

std::optional<std::string> SubkeyName(HKEY key, DWORD index)
{
    char name[nameCharacters];
    DWORD characters = nameCharacters;
    if (::RegEnumKeyExA(key, index, name, &characters, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    return std::string(name, characters);
}

/// The names of all device keys, read once; null, and the reason in `status`, when their root cannot be opened.
const std::vector<std::string>* DeviceKeys(AdapterRegistry& registry, LSTATUS& status)
{
    if (registry.PciDevices) {
        return &*registry.PciDevices;
    }
    RegistryKey root;
    if (status = OpenMachineKey(pciRoot, root); !root) {
        return nullptr;
    }
    auto& names = registry.PciDevices.emplace();
    for (DWORD index = 0; auto name = SubkeyName(root.get(), index); ++index) {
        names.push_back(std::move(*name));
    }
    return &names;
}

/// "LocationInformation" up to its first NUL.
std::optional<std::string> ReadLocation(HKEY instance)
{
    constexpr char valueName[] = "LocationInformation";
    DWORD bytes = 0;
    if (::RegQueryValueExA(instance, valueName, nullptr, nullptr, nullptr, &bytes) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    std::string text(bytes, '\0');
    if (::RegQueryValueExA(instance, valueName, nullptr, nullptr, reinterpret_cast<BYTE*>(text.data()), &bytes) !=
        ERROR_SUCCESS) {
        return std::nullopt;
    }
    return std::string(text.c_str());
}

/// Location of a device's first instance. Intended: other instances are ignored.
std::optional<std::string> LocationOfDevice(const std::string& deviceKey)
{
    RegistryKey device;
    if (OpenMachineKey(pciRoot + deviceKey, device) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    const auto instanceName = SubkeyName(device.get(), 0);
    if (!instanceName) {
        return std::nullopt;
    }
    RegistryKey instance;
    OpenMachineKey(pciRoot + deviceKey + "\\" + *instanceName, instance);
    return instance ? ReadLocation(instance.get()) : std::nullopt;
}

} // namespace

int32_t GetBusIdFromRegistry(const PnpDeviceId& adapter, AdapterRegistry& registry)
{
    LSTATUS status = ERROR_SUCCESS;
    const auto* const devices = DeviceKeys(registry, status);
    if (!devices) {
        PLOGW << "Failed to get Bus ID from registry. Error code: " << status;
        return 0;
    }
    for (const std::string& device : *devices) {
        if (device.find(adapter.Vendor) == std::string::npos || device.find(adapter.Device) == std::string::npos) {
            continue;
        }
        if (const auto location = LocationOfDevice(device)) {
            return ToInt(BusDigits(*location));
        }
    }
    return 0;
}

int32_t GetBusIdFromRegistry(const std::string& vendorId, const std::string& deviceId)
{
    AdapterRegistry registry;
    return GetBusIdFromRegistry({vendorId, deviceId, ""}, registry);
}

} // namespace orvel::shared::enumeration
