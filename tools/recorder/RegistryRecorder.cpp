#include "Interfaces.h"

#include "RegistryValue.h"

#include "platform/Handles.h"

namespace orvel::recorder {

using namespace orvel::shared::enumeration;

namespace {

constexpr wchar_t pciRoot[] = L"SYSTEM\\CurrentControlSet\\Enum\\PCI";
constexpr wchar_t videoRoot[] = L"SYSTEM\\CurrentControlSet\\Control\\Video";
constexpr DWORD nameCharacters = 256; // the longest name of a key, and its NUL

// A link in the registry may lead back to a key above it. These are the library's own limits.
constexpr int mostLevels = 32;
constexpr int mostKeys = 16384;

RegistryKey Open(HKEY parent, const std::wstring& path)
{
    HKEY key = nullptr;
    const bool isOpen = ::RegOpenKeyExW(parent, path.c_str(), 0, KEY_READ, &key) == ERROR_SUCCESS;
    return RegistryKey(isOpen ? key : nullptr);
}

std::optional<std::wstring> SubkeyName(HKEY key, DWORD index)
{
    wchar_t name[nameCharacters];
    DWORD characters = nameCharacters;
    if (::RegEnumKeyExW(key, index, name, &characters, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    return std::wstring(name, characters);
}

void RecordValue(HKEY key, const wchar_t* name, Json& values)
{
    DWORD type = REG_NONE;
    DWORD bytes = 0;
    if (::RegQueryValueExW(key, name, nullptr, &type, nullptr, &bytes) != ERROR_SUCCESS) {
        return;
    }
    std::vector<BYTE> data(bytes);
    if (::RegQueryValueExW(key, name, nullptr, &type, data.data(), &bytes) == ERROR_SUCCESS) {
        data.resize(bytes);
        values[Text(std::wstring_view(name)).get<std::string>()] = RegistryValue(type, data);
    }
}

Json& KeyAt(Json& section, const std::wstring& path)
{
    Json& values = section[Text(std::wstring_view(path)).get<std::string>()];
    if (values.is_null()) {
        values = Json::object();
    }
    return values;
}

/// Every PCI device, as any text can be part of its name; of its instances the first, whose location is looked up.
void RecordPciDevices(Json& section)
{
    const RegistryKey root = Open(HKEY_LOCAL_MACHINE, pciRoot);
    if (!root) {
        return;
    }
    KeyAt(section, pciRoot);
    for (DWORD index = 0; const auto device = SubkeyName(root.get(), index); ++index) {
        const std::wstring path = std::wstring(pciRoot) + L"\\" + *device;
        const RegistryKey key = Open(root.get(), *device);
        const auto instance = key ? SubkeyName(key.get(), 0) : std::nullopt;
        Json& values = KeyAt(section, instance ? path + L"\\" + *instance : path);
        if (const RegistryKey first = instance ? Open(key.get(), *instance) : nullptr) {
            RecordValue(first.get(), L"LocationInformation", values);
        }
    }
}

/// The keys below the displays' root that have one of the two values.
class DisplayKeys {
public:
    explicit DisplayKeys(Json& target) : section(target) {}

    void Record()
    {
        if (const RegistryKey root = Open(HKEY_LOCAL_MACHINE, videoRoot)) {
            KeyAt(section, videoRoot);
            RecordBelow(root.get(), videoRoot, 1);
        }
    }

private:
    void RecordBelow(HKEY parent, const std::wstring& path, int level)
    {
        for (DWORD index = 0; level <= mostLevels && keysLeft > 0; ++index, --keysLeft) {
            const auto name = SubkeyName(parent, index);
            if (!name) {
                return;
            }
            if (const RegistryKey key = Open(parent, *name)) {
                RecordKey(key.get(), path + L"\\" + *name);
                RecordBelow(key.get(), path + L"\\" + *name, level + 1);
            }
        }
    }

    void RecordKey(HKEY key, const std::wstring& path)
    {
        Json values = Json::object();
        RecordValue(key, L"MatchingDeviceId", values);
        RecordValue(key, L"HardwareInformation.BiosString", values);
        if (!values.empty()) {
            KeyAt(section, path) = values;
        }
    }

    Json& section;
    int keysLeft = mostKeys;
};

} // namespace

Json RecordRegistry()
{
    Json section = Json::object();
    RecordPciDevices(section);
    DisplayKeys(section).Record();
    return section;
}

} // namespace orvel::recorder
