#include "system/DisplayRegistry.h"

#include "system/Handles.h"
#include "system/RegistryText.h"
#include "system/TextEncoding.h"

namespace orvel::shared::enumeration {

namespace {

constexpr DWORD longestValueBytes = 255;
constexpr DWORD nameCharacters = 256; // the longest name of a key, and its NUL

// Far more than any computer has. A link in the registry may lead back to a key above it: without an end such a search would
// take the whole stack, or as good as for ever.
constexpr size_t mostLevels = 32;
constexpr size_t mostKeys = 16384;

RegistryKey OpenKey(HKEY parent, const wchar_t* path)
{
    HKEY key = nullptr;
    const bool isOpen = ::RegOpenKeyExW(parent, path, 0, KEY_READ, &key) == ERROR_SUCCESS;
    return RegistryKey(isOpen ? key : nullptr);
}

/// One search for the driver of an adapter.
class DriverSearch {
public:
    DriverSearch(const std::string& vendorId, const std::string& deviceId) : vendorId(vendorId), deviceId(deviceId) {}

    std::string BiosStringBelow(HKEY key, size_t level = 1);

private:
    const std::string& vendorId;
    const std::string& deviceId;
    size_t keysLeft = mostKeys;
};

std::string DriverSearch::BiosStringBelow(HKEY key, size_t level)
{
    wchar_t name[nameCharacters];
    for (DWORD index = 0; level <= mostLevels && keysLeft > 0; ++index, --keysLeft) {
        DWORD characters = nameCharacters;
        if (::RegEnumKeyExW(key, index, name, &characters, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) {
            break;
        }
        const RegistryKey subkey = OpenKey(key, name);
        if (!subkey) {
            continue;
        }
        if (IsMatchingDevice(ReadTextValue(subkey.get(), L"MatchingDeviceId"), vendorId, deviceId)) {
            return ReadTextValue(subkey.get(), L"HardwareInformation.BiosString");
        }
        if (std::string found = BiosStringBelow(subkey.get(), level + 1); !found.empty()) {
            return found;
        }
    }
    return {};
}

} // namespace

std::string GetBiosString(const std::string& vendorId, const std::string& deviceId)
{
    const RegistryKey video = OpenKey(HKEY_LOCAL_MACHINE, L"SYSTEM\\CurrentControlSet\\Control\\Video");
    return video ? FindBiosString(video.get(), vendorId, deviceId) : std::string();
}

std::string FindBiosString(HKEY key, const std::string& vendorId, const std::string& deviceId)
{
    return DriverSearch(vendorId, deviceId).BiosStringBelow(key);
}

std::string ReadTextValue(HKEY key, const wchar_t* name)
{
    BYTE data[longestValueBytes];
    DWORD bytes = sizeof(data);
    if (::RegQueryValueExW(key, name, nullptr, nullptr, data, &bytes) != ERROR_SUCCESS) {
        return {};
    }
    const std::u16string text = RegistryText(data, bytes);
    return ToUtf8(std::wstring(text.begin(), text.end()));
}

} // namespace orvel::shared::enumeration
