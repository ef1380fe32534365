#include "system/DisplayRegistry.h"

#include <doctest/doctest.h>

#include "support/HostLog.h"

using namespace orvel::shared::enumeration;
using namespace orvel::tests;

namespace {

/// Runs one search with a new registry reader.
std::string GetBiosString(const std::string& vendor, const std::string& device)
{
    AdapterRegistry registry;
    return orvel::shared::enumeration::GetBiosString({vendor, device, ""}, registry);
}

const std::string video = "SYSTEM\\CurrentControlSet\\Control\\Video\\";
constexpr char bios[] = "HardwareInformation.BiosString";

Json Driver(const std::string& matchingDeviceId, const Json& biosString)
{
    return {{"MatchingDeviceId", matchingDeviceId}, {bios, biosString}};
}

std::string Hex(const std::string& text, bool isTerminated)
{
    std::string hex;
    for (const char character : text + std::string(isTerminated ? 1 : 0, '\0')) {
        char unit[8];
        std::snprintf(unit, sizeof(unit), "%02x00", static_cast<unsigned char>(character));
        hex += unit;
    }
    return hex;
}

} // namespace

TEST_CASE("The BIOS string of the matching driver key is found at any depth, without log lines")
{
    Simulate({{"registry",
               {{video + "{A}\\0000", Driver("pci\\ven_10de&dev_2504", "other")},
                {video + "{B}\\0000\\deep", Driver("pci\\ven_8086&dev_5917&subsys_225d17aa", "Intel Video BIOS")}}}});
    HostLog log;
    CHECK(GetBiosString("8086", "5917") == "Intel Video BIOS");
    CHECK(GetBiosString("1002", "73BF") == "");
    CHECK(log.Lines.empty());
}

TEST_CASE("Without the video key there is no BIOS string")
{
    Simulate(Json::object());
    CHECK(GetBiosString("8086", "5917") == "");
}

TEST_CASE("A MatchingDeviceId of 20 characters never matches, one of 21 does")
{
    Simulate({{"registry", {{video + "{A}", Driver("pci\\ven_8086&dev_591", "short")}}}});
    CHECK(GetBiosString("8086", "591") == "");
    Simulate({{"registry", {{video + "{A}", Driver("pci\\ven_8086&dev_5917", "long")}}}});
    CHECK(GetBiosString("8086", "5917") == "long");
}

TEST_CASE("Identifiers are compared case-sensitively")
{
    Simulate({{"registry", {{video + "{A}", Driver("pci\\ven_1002&dev_73bf", "lower")}}}});
    CHECK(GetBiosString("1002", "73BF") == "");
    CHECK(GetBiosString("1002", "73bf") == "lower");
}

TEST_CASE("Of two driver keys for the same device, the first in the registry's order is used")
{
    Simulate({{"registry",
               {{video + "{A}", Driver("pci\\ven_8086&dev_5917", "first")},
                {video + "{B}", Driver("pci\\ven_8086&dev_5917", "second")}}}});
    CHECK(GetBiosString("8086", "5917") == "first");
}

TEST_CASE("A matching key without a BIOS string ends the search of its level")
{
    Simulate({{"registry",
               {{video + "{A}", {{"MatchingDeviceId", "pci\\ven_8086&dev_5917"}}},
                {video + "{B}", Driver("pci\\ven_8086&dev_5917", "second")}}}});
    CHECK(GetBiosString("8086", "5917") == "");
}

TEST_CASE("After a nested search without a result the outer level continues")
{
    Simulate({{"registry",
               {{video + "{A}\\0000", {{"MatchingDeviceId", "pci\\ven_8086&dev_5917"}}},
                {video + "{B}\\0000", Driver("pci\\ven_8086&dev_5917", "second")}}}});
    CHECK(GetBiosString("8086", "5917") == "second");
}

TEST_CASE("A value of any registry type is read up to its NUL or its end")
{
    for (const bool isTerminated : {true, false}) {
        CAPTURE(isTerminated);
        Simulate({{"registry",
                   {{video + "{A}", Driver("pci\\ven_8086&dev_5917", {{"hex", Hex("Version 1.0", isTerminated)}})}}}});
        CHECK(GetBiosString("8086", "5917") == "Version 1.0");
    }
    Simulate({{"registry", {{video + "{A}", Driver("pci\\ven_8086&dev_5917", {{"hex", Hex("AB", false) + "43"}})}}}});
    CHECK(GetBiosString("8086", "5917") == "AB"); // a trailing odd byte is ignored
}

TEST_CASE("A value longer than 255 bytes is treated as missing")
{
    for (const size_t characters : {126U, 127U, 128U}) {
        CAPTURE(characters);
        const std::string text(characters, 'x');
        Simulate({{"registry", {{video + "{A}", Driver("pci\\ven_8086&dev_5917", {{"hex", Hex(text, false)}})}}}});
        CHECK(GetBiosString("8086", "5917") == (characters == 128U ? "" : text));
    }
}

TEST_CASE("A BIOS string is returned as UTF-8")
{
    Simulate({{"registry", {{video + "{A}", Driver("pci\\ven_8086&dev_5917", "Bü\u20ACos")}}}});
    CHECK(GetBiosString("8086", "5917") == "Bü\u20ACos");
}

TEST_CASE("The search is limited to 32 levels, because links can form cycles")
{
    for (const int levels : {32, 33}) {
        CAPTURE(levels);
        std::string path = video + "1";
        for (int level = 2; level <= levels; ++level) {
            path += "\\" + std::to_string(level);
        }
        Simulate({{"registry", {{path, Driver("pci\\ven_8086&dev_5917", "deep")}}}});
        CHECK(GetBiosString("8086", "5917") == (levels == 32 ? "deep" : ""));
    }
}

namespace {

template <typename Function>
Function OfNtdll(const char* name)
{
    return reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), name)));
}

/// The system's name of an open key.
std::wstring SystemName(HKEY key)
{
    constexpr int keyNameInformation = 3;
    struct {
        ULONG Bytes;
        wchar_t Name[1024];
    } name{};
    ULONG length = 0;
    OfNtdll<LONG(NTAPI*)(HKEY, int, void*, ULONG, ULONG*)>("NtQueryKey")(key, keyNameInformation, &name, sizeof(name),
                                                                         &length);
    return std::wstring(name.Name, name.Bytes / sizeof(wchar_t));
}

/// During its lifetime, a registry link below a key that refers back to the key.
class Loop {
public:
    Loop(HKEY key, const wchar_t* name)
    {
        ::RegCreateKeyExW(key, name, 0, nullptr, REG_OPTION_CREATE_LINK | REG_OPTION_VOLATILE,
                          KEY_ALL_ACCESS | KEY_CREATE_LINK, nullptr, &link, nullptr);
        const std::wstring target = SystemName(key);
        ::RegSetValueExW(link, L"SymbolicLinkValue", 0, REG_LINK, reinterpret_cast<const BYTE*>(target.data()),
                         static_cast<DWORD>(target.size() * sizeof(wchar_t)));
    }
    Loop(const Loop&) = delete;
    Loop& operator=(const Loop&) = delete;
    ~Loop()
    {
        OfNtdll<LONG(NTAPI*)(HKEY)>("NtDeleteKey")(link); // deletes the link, not its target
        ::RegCloseKey(link);
    }

private:
    HKEY link = nullptr;
};

} // namespace

TEST_CASE("Cyclic registry links end the search, and hide no neighbouring keys")
{
    Simulate({{"registry", {{video + "{B}", Driver("pci\\ven_8086&dev_5917", "beside")}}}});
    HKEY opened = nullptr;
    REQUIRE(::RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"SYSTEM\\CurrentControlSet\\Control\\Video", 0, KEY_ALL_ACCESS, &opened) ==
            ERROR_SUCCESS);
    const RegistryKey key(opened);
    {
        const Loop first(opened, L"{A}");
        HKEY inside = nullptr;
        REQUIRE(::RegOpenKeyExW(opened, L"{A}\\{A}\\{B}", 0, KEY_READ, &inside) == ERROR_SUCCESS); // the link is a cycle
        ::RegCloseKey(inside);
        CHECK(GetBiosString("8086", "5917") == "beside");
        CHECK(GetBiosString("1002", "73bf") == "");
        const Loop second(opened, L"{C}");
        CHECK(GetBiosString("1002", "73bf") == ""); // two cycles make the search exponential
    }
}
