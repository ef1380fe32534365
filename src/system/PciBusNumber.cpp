#include "system/PciBusNumber.h"

#include <optional>
#include <vector>

#include "system/Handles.h"
#include "system/LocationText.h"
#include "system/Log.h"
#include "system/NumberText.h"

namespace orvel::shared::enumeration {

namespace {

constexpr char pciRoot[] = "SYSTEM\\CurrentControlSet\\Enum\\PCI\\";
constexpr DWORD nameCharacters = 255;

/// Opens a key below HKEY_LOCAL_MACHINE; null, and the reason in `status`, when that fails.
RegistryKey OpenKey(const std::string& path, LSTATUS& status)
{
    HKEY key = nullptr;
    status = ::RegOpenKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key);
    return RegistryKey(status == ERROR_SUCCESS ? key : nullptr);
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

std::vector<std::string> DeviceKeys(HKEY root, const std::string& vendorId, const std::string& deviceId)
{
    std::vector<std::string> names;
    for (DWORD index = 0; const auto name = SubkeyName(root, index); ++index) {
        if (name->find(vendorId) != std::string::npos && name->find(deviceId) != std::string::npos) {
            names.push_back(*name);
        }
    }
    return names;
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

/// Location of a device's first instance. Intended: further instances are never looked at.
std::optional<std::string> LocationOfDevice(const std::string& deviceKey)
{
    LSTATUS status = ERROR_SUCCESS;
    const RegistryKey device = OpenKey(pciRoot + deviceKey, status);
    if (!device) {
        return std::nullopt;
    }
    const auto instanceName = SubkeyName(device.get(), 0);
    if (!instanceName) {
        return std::nullopt;
    }
    const RegistryKey instance = OpenKey(pciRoot + deviceKey + "\\" + *instanceName, status);
    return instance ? ReadLocation(instance.get()) : std::nullopt;
}

} // namespace

int32_t GetBusIdFromRegistry(const std::string& vendorId, const std::string& deviceId)
{
    LSTATUS status = ERROR_SUCCESS;
    const RegistryKey root = OpenKey(pciRoot, status);
    if (!root) {
        PLOGW << "Failed to get Bus ID from registry. Error code: " << status;
        return 0;
    }
    for (const std::string& device : DeviceKeys(root.get(), vendorId, deviceId)) {
        if (const auto location = LocationOfDevice(device)) {
            return ToInt(BusDigits(*location));
        }
    }
    return 0;
}

} // namespace orvel::shared::enumeration
