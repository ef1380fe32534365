#include "FloorRegistry.h"

#include <cstdio>
#include <cstring>
#include <cwchar>

#include "system/Handles.h"

namespace orvel::bench {

namespace {

using shared::enumeration::RegistryKey;

constexpr char pciRoot[] = "SYSTEM\\CurrentControlSet\\Enum\\PCI\\";

RegistryKey Open(const char* path)
{
    HKEY key = nullptr;
    ::RegOpenKeyExA(HKEY_LOCAL_MACHINE, path, 0, KEY_READ, &key);
    return RegistryKey(key);
}

RegistryKey Open(HKEY parent, const wchar_t* path)
{
    HKEY key = nullptr;
    ::RegOpenKeyExW(parent, path, 0, KEY_READ, &key);
    return RegistryKey(key);
}

bool SubkeyName(HKEY key, DWORD index, char (&name)[255])
{
    DWORD characters = sizeof(name);
    return ::RegEnumKeyExA(key, index, name, &characters, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
}

void ReadLocation(const char* device)
{
    char path[512];
    std::snprintf(path, sizeof(path), "%s%s", pciRoot, device);
    const RegistryKey key = Open(path);
    char instance[255];
    SubkeyName(key.get(), 0, instance);
    std::snprintf(path, sizeof(path), "%s%s\\%s", pciRoot, device, instance);
    const RegistryKey instanceKey = Open(path);
    BYTE location[512];
    DWORD bytes = 0;
    ::RegQueryValueExA(instanceKey.get(), "LocationInformation", nullptr, nullptr, nullptr, &bytes);
    ::RegQueryValueExA(instanceKey.get(), "LocationInformation", nullptr, nullptr, location, &bytes);
}

bool ReadText(HKEY key, const wchar_t* name, wchar_t (&text)[128])
{
    DWORD bytes = 255;
    const LSTATUS status = ::RegQueryValueExW(key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(text), &bytes);
    text[status == ERROR_SUCCESS ? bytes / sizeof(wchar_t) : 0] = L'\0';
    return status == ERROR_SUCCESS;
}

/// Whether a text of the form pci\ven_vvvv&dev_dddd names the adapter.
bool IsMatch(const wchar_t* text, const wchar_t* vendorId, const wchar_t* deviceId)
{
    return std::wcslen(text) >= 21 && std::wcsncmp(text + 8, vendorId, 4) == 0 && std::wcsncmp(text + 17, deviceId, 4) == 0;
}

bool FindBios(HKEY key, const wchar_t* vendorId, const wchar_t* deviceId)
{
    wchar_t name[256];
    DWORD characters = 256;
    for (DWORD index = 0;
         ::RegEnumKeyExW(key, index, name, &characters, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
         ++index, characters = 256) {
        const RegistryKey subkey = Open(key, name);
        wchar_t text[128];
        if (ReadText(subkey.get(), L"MatchingDeviceId", text) && IsMatch(text, vendorId, deviceId)) {
            return ReadText(subkey.get(), L"HardwareInformation.BiosString", text);
        }
        if (FindBios(subkey.get(), vendorId, deviceId)) {
            return true;
        }
    }
    return false;
}

} // namespace

void ReadBusNumber(const char* vendorId, const char* deviceId)
{
    const RegistryKey root = Open(pciRoot);
    char name[255];
    char found[255] = "";
    for (DWORD index = 0; SubkeyName(root.get(), index, name); ++index) {
        if (found[0] == '\0' && std::strstr(name, vendorId) && std::strstr(name, deviceId)) {
            std::memcpy(found, name, sizeof(found));
        }
    }
    if (found[0] != '\0') {
        ReadLocation(found);
    }
}

void ReadBiosText(const wchar_t* vendorId, const wchar_t* deviceId)
{
    const RegistryKey video = Open(HKEY_LOCAL_MACHINE, L"SYSTEM\\CurrentControlSet\\Control\\Video");
    FindBios(video.get(), vendorId, deviceId);
}

} // namespace orvel::bench
