#include "platform/KnownKey.h"

#include "formulas/RegistryText.h"
#include "platform/Registry.h"
#include "platform/TextEncoding.h"

namespace orvel::shared::enumeration {

namespace {

constexpr DWORD longestValueBytes = 255;
constexpr DWORD nameCharacters = 256; // the longest name of a key, and its NUL

KnownKey Open(HKEY parent, const wchar_t* path)
{
    RegistryKey key;
    OpenKey(parent, path, key);
    return KnownKey(std::move(key));
}

std::string ReadText(HKEY key, const wchar_t* name)
{
    BYTE data[longestValueBytes];
    DWORD bytes = sizeof(data);
    if (::RegQueryValueExW(key, name, nullptr, nullptr, data, &bytes) != ERROR_SUCCESS) {
        return {};
    }
    const std::u16string text = RegistryText(data, bytes);
    return ToUtf8(std::wstring(text.begin(), text.end()));
}

} // namespace

KnownKey KnownKey::OfMachine(const wchar_t* path)
{
    return Open(HKEY_LOCAL_MACHINE, path);
}

KnownKey* KnownKey::Subkey(std::size_t index)
{
    while (index >= subkeys.size() && ReadSubkey()) {
    }
    return index < subkeys.size() ? subkeys[index].get() : nullptr;
}

bool KnownKey::ReadSubkey()
{
    if (!key || hasAllSubkeys) {
        return false;
    }
    wchar_t name[nameCharacters];
    DWORD characters = nameCharacters;
    const auto index = static_cast<DWORD>(subkeys.size());
    hasAllSubkeys =
        ::RegEnumKeyExW(key.get(), index, name, &characters, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS;
    if (!hasAllSubkeys) {
        subkeys.push_back(std::make_unique<KnownKey>(Open(key.get(), name)));
    }
    return !hasAllSubkeys;
}

const std::string& KnownKey::Text(const wchar_t* name)
{
    const auto [text, isNew] = texts.try_emplace(name);
    if (isNew && key) {
        text->second = ReadText(key.get(), name);
    }
    return text->second;
}

} // namespace orvel::shared::enumeration
