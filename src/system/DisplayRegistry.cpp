#include "system/DisplayRegistry.h"

#include "system/Handles.h"
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

/// Whether a text of the form pci\ven_vvvv&dev_dddd… names the adapter.
bool IsMatchingDevice(const std::string& matchingDeviceId, const std::string& vendorId, const std::string& deviceId)
{
    return matchingDeviceId.size() >= 21 && matchingDeviceId.compare(8, 4, vendorId) == 0 &&
           matchingDeviceId.compare(17, 4, deviceId) == 0;
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
    wchar_t text[longestValueBytes / sizeof(wchar_t) + 1];
    DWORD bytes = longestValueBytes;
    if (::RegQueryValueExW(key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(text), &bytes) != ERROR_SUCCESS) {
        return {};
    }
    text[bytes / sizeof(wchar_t)] = L'\0'; // the data need not end in one; an odd last byte is no unit
    return ToUtf8(text);
}

} // namespace orvel::shared::enumeration
