#include "system/DisplayRegistry.h"

#include "system/Handles.h"
#include "system/RegistryText.h"
#include "system/TextEncoding.h"

namespace orvel::shared::enumeration {

namespace {

constexpr DWORD longestValueBytes = 255;
constexpr DWORD nameCharacters = 256; // the longest name of a key, and its NUL

RegistryKey OpenKey(HKEY parent, const wchar_t* path)
{
    HKEY key = nullptr;
    const bool isOpen = ::RegOpenKeyExW(parent, path, 0, KEY_READ, &key) == ERROR_SUCCESS;
    return RegistryKey(isOpen ? key : nullptr);
}

} // namespace

std::string GetBiosString(const std::string& vendorId, const std::string& deviceId)
{
    const RegistryKey video = OpenKey(HKEY_LOCAL_MACHINE, L"SYSTEM\\CurrentControlSet\\Control\\Video");
    return video ? FindBiosString(video.get(), vendorId, deviceId) : std::string();
}

std::string FindBiosString(HKEY key, const std::string& vendorId, const std::string& deviceId)
{
    wchar_t name[nameCharacters];
    for (DWORD index = 0;; ++index) {
        DWORD characters = nameCharacters;
        if (::RegEnumKeyExW(key, index, name, &characters, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) {
            return {};
        }
        const RegistryKey subkey = OpenKey(key, name);
        if (!subkey) {
            continue;
        }
        if (IsMatchingDevice(ReadTextValue(subkey.get(), L"MatchingDeviceId"), vendorId, deviceId)) {
            return ReadTextValue(subkey.get(), L"HardwareInformation.BiosString");
        }
        if (std::string found = FindBiosString(subkey.get(), vendorId, deviceId); !found.empty()) {
            return found;
        }
    }
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
