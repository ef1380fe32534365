// The simulated SetupAPI: what it lists, and what it refuses. The calls are this DLL's own imports.

#include <cstring>

#include <doctest/doctest.h>

#include <windows.h>

#include <setupapi.h>

#include "simulation/Drivers.h"

using namespace orvel::tests;

namespace {

constexpr GUID displays = {0x4d36e968, 0xe325, 0x11ce, {0xbf, 0xc1, 0x08, 0x00, 0x2b, 0xe1, 0x03, 0x18}};
constexpr GUID deviceFormat = {0xa45c254e, 0xdf1c, 0x4efd, {0x80, 0x20, 0x67, 0xd1, 0x46, 0xa8, 0x50, 0xe0}};
constexpr DEVPROPKEY description = {deviceFormat, 2};
constexpr DEVPROPKEY service = {deviceFormat, 6};
const auto notFound = static_cast<DWORD>(ERROR_NOT_FOUND);

constexpr const char* driverKey = "SYSTEM\\CurrentControlSet\\Control\\Class\\{4d36e968-e325-11ce-bfc1-08002be10318}\\0000";

/// A card with a driver key, and one that is not there any more.
Json TwoDevices()
{
    return {{"pnp",
             {{"devices",
               {{{"instance_id", "PCI\\A"},
                 {"DeviceDesc", "Card"},
                 {"Service", {{"status", 5}}},
                 {"Driver", "{4d36e968-e325-11ce-bfc1-08002be10318}\\0000"}},
                {{"instance_id", "PCI\\B"}, {"IsPresent", false}}}}}},
            {"registry",
             {{driverKey, {{"DriverDesc", "Card"}, {"Size", {{"qword", 25769803776}}}, {"Secret", {{"status", 5}}}}}}}};
}

SP_DEVINFO_DATA Sized()
{
    SP_DEVINFO_DATA data{};
    data.cbSize = sizeof data;
    return data;
}

/// A set of devices that are there, and its first device.
struct Listed {
    HDEVINFO Set = ::SetupDiGetClassDevsW(&displays, nullptr, nullptr, DIGCF_PRESENT);
    SP_DEVINFO_DATA Device = Sized();

    Listed() { REQUIRE(::SetupDiEnumDeviceInfo(Set, 0, &Device)); }
    Listed(const Listed&) = delete;
    Listed& operator=(const Listed&) = delete;
    ~Listed() { ::SetupDiDestroyDeviceInfoList(Set); }
};

/// How a call ends: 0 for success, or the last error.
DWORD Ended(BOOL result)
{
    return result ? 0 : ::GetLastError();
}

DWORD ReadProperty(const Listed& listed, const DEVPROPKEY& key, void* buffer, DWORD size, DWORD& needed)
{
    DEVPROPTYPE type = 0;
    auto device = listed.Device;
    return Ended(
        ::SetupDiGetDevicePropertyW(listed.Set, &device, &key, &type, static_cast<PBYTE>(buffer), size, &needed, 0));
}

} // namespace

TEST_CASE("SetupAPI lists the display devices that are there, and no others")
{
    Simulate(TwoDevices());
    const auto count = [](const GUID* setupClass, DWORD flags) {
        const auto set = ::SetupDiGetClassDevsW(setupClass, nullptr, nullptr, flags);
        DWORD index = 0;
        for (auto data = Sized(); ::SetupDiEnumDeviceInfo(set, index, &data); ++index) {
        }
        CHECK(::GetLastError() == ERROR_NO_MORE_ITEMS);
        CHECK(::SetupDiDestroyDeviceInfoList(set));
        return index;
    };
    CHECK(count(&displays, DIGCF_PRESENT) == 1);
    CHECK(count(&displays, 0) == 2);
    CHECK(count(nullptr, DIGCF_ALLCLASSES) == 2);
    CHECK(count(&deviceFormat, DIGCF_PRESENT) == 0);
    CHECK(Live()["pnp"] == 0);
    Simulate(Json::object());
    CHECK(count(&displays, 0) == 0);
}

TEST_CASE("SetupAPI gives a text, or the size that it needs")
{
    Simulate(TwoDevices());
    const Listed listed;
    auto device = listed.Device;
    wchar_t text[16];
    DWORD needed = 0;
    CHECK(Ended(::SetupDiGetDeviceInstanceIdW(listed.Set, &device, text, 5, &needed)) == ERROR_INSUFFICIENT_BUFFER);
    CHECK(needed == 6);
    CHECK(Ended(::SetupDiGetDeviceInstanceIdW(listed.Set, &device, text, 6, nullptr)) == 0);
    CHECK(std::wstring(text) == L"PCI\\A");
    CHECK(ReadProperty(listed, description, text, 9, needed) == ERROR_INSUFFICIENT_BUFFER);
    CHECK(needed == 10);
    CHECK(ReadProperty(listed, description, text, 10, needed) == 0);
    CHECK(std::wstring(text) == L"Card");
    CHECK(ReadProperty(listed, service, text, sizeof text, needed) == ERROR_ACCESS_DENIED);
    CHECK(ReadProperty(listed, {deviceFormat, 23}, text, sizeof text, needed) == notFound);
    CHECK(ReadProperty(listed, {deviceFormat, 4711}, text, sizeof text, needed) == notFound);
    CHECK(Only(Trace(), "pnp SetupDiGetDevicePropertyW PCI\\A DeviceDesc").size() == 2);
}

TEST_CASE("SetupAPI opens the driver key, whose values are 64 bits too, or refused")
{
    Simulate(TwoDevices());
    {
        const Listed listed;
        auto device = listed.Device;
        const auto key = ::SetupDiOpenDevRegKey(listed.Set, &device, DICS_FLAG_GLOBAL, 0, DIREG_DRV, KEY_READ);
        REQUIRE(key != INVALID_HANDLE_VALUE);
        uint64_t number = 0;
        DWORD type = 0, size = sizeof number;
        CHECK(::RegQueryValueExW(key, L"Size", nullptr, &type, reinterpret_cast<BYTE*>(&number), &size) == ERROR_SUCCESS);
        CHECK(type == REG_QWORD);
        CHECK(number == 25769803776);
        CHECK(::RegQueryValueExW(key, L"secret", nullptr, &type, nullptr, &size) == ERROR_ACCESS_DENIED);
        CHECK(::RegQueryValueExW(key, L"None", nullptr, &type, nullptr, &size) == ERROR_FILE_NOT_FOUND);
        CHECK(Live()["registry"] == 1);
        CHECK(::RegCloseKey(key) == ERROR_SUCCESS);
    }
    CHECK(Live()["registry"] == 0);
    CHECK(Only(Trace(), "registry ").at(0) == "registry RegQueryValueExW 0000 Size");

    Json machine = TwoDevices();
    machine["pnp"]["devices"][0].erase("Driver");
    Simulate(machine);
    const Listed listed;
    auto device = listed.Device;
    CHECK(::SetupDiOpenDevRegKey(listed.Set, &device, DICS_FLAG_GLOBAL, 0, DIREG_DRV, KEY_READ) == INVALID_HANDLE_VALUE);
    CHECK(::GetLastError() == static_cast<DWORD>(ERROR_KEY_DOES_NOT_EXIST));
}

TEST_CASE("SetupAPI returns the statuses of the file")
{
    Json machine = TwoDevices();
    machine["pnp"]["SetupDiGetClassDevsW"] = 8;
    Simulate(machine);
    CHECK(::SetupDiGetClassDevsW(&displays, nullptr, nullptr, DIGCF_PRESENT) == INVALID_HANDLE_VALUE);
    CHECK(::GetLastError() == 8);

    machine = TwoDevices();
    machine["pnp"]["SetupDiEnumDeviceInfo"] = 31;
    machine["pnp"]["devices"][0]["SetupDiGetDeviceInstanceIdW"] = 5;
    machine["pnp"]["devices"][0]["SetupDiOpenDevRegKey"] = 6;
    Simulate(machine);
    const Listed listed;
    auto device = listed.Device;
    wchar_t text[16];
    CHECK(Ended(::SetupDiGetDeviceInstanceIdW(listed.Set, &device, text, 16, nullptr)) == 5);
    CHECK(::SetupDiOpenDevRegKey(listed.Set, &device, DICS_FLAG_GLOBAL, 0, DIREG_DRV, KEY_READ) == INVALID_HANDLE_VALUE);
    CHECK(::GetLastError() == 6);
    CHECK(Ended(::SetupDiEnumDeviceInfo(listed.Set, 1, &device)) == 31);
}

TEST_CASE("SetupAPI reports callers that break its rules")
{
    Simulate(TwoDevices());
    {
        const Listed listed;
        auto wrong = listed.Device;
        wrong.cbSize = 1;
        CHECK(Ended(::SetupDiEnumDeviceInfo(listed.Set, 0, &wrong)) == ERROR_INVALID_USER_BUFFER);
        wchar_t text[16];
        CHECK(Ended(::SetupDiGetDeviceInstanceIdW(listed.Set, &wrong, text, 16, nullptr)) == ERROR_INVALID_USER_BUFFER);
        const Listed other;
        auto device = listed.Device;
        CHECK(Ended(::SetupDiGetDeviceInstanceIdW(other.Set, &device, text, 16, nullptr)) ==
              static_cast<DWORD>(ERROR_NO_SUCH_DEVINST));
        DWORD needed = 0;
        CHECK(Ended(::SetupDiGetDevicePropertyW(listed.Set, &device, &description, nullptr, nullptr, 0, &needed, 0)) ==
              ERROR_INVALID_PARAMETER);
        DEVPROPTYPE type = 0;
        CHECK(Ended(::SetupDiGetDevicePropertyW(listed.Set, &device, &description, &type, nullptr, 0, &needed, 1)) ==
              ERROR_INVALID_FLAGS);
    }
    const auto set = ::SetupDiGetClassDevsW(&displays, nullptr, nullptr, DIGCF_PRESENT);
    CHECK(::SetupDiDestroyDeviceInfoList(set));
    CHECK(Ended(::SetupDiDestroyDeviceInfoList(set)) == ERROR_INVALID_HANDLE);
    CHECK(::SetupDiGetClassDevsW(nullptr, nullptr, nullptr, 0) == INVALID_HANDLE_VALUE);
    CHECK(TakeViolations() == Violations{"pnp SetupDiEnumDeviceInfo 0: cbSize is wrong",
                                         "pnp SetupDiGetDeviceInstanceIdW PCI\\A: cbSize is wrong",
                                         "pnp SetupDiGetDeviceInstanceIdW PCI\\A: the device is not of this set",
                                         "pnp SetupDiGetDevicePropertyW PCI\\A DeviceDesc: a null pointer",
                                         "pnp SetupDiGetDevicePropertyW PCI\\A DeviceDesc: flags are reserved",
                                         "pnp SetupDiDestroyDeviceInfoList: the set of devices is not open",
                                         "pnp SetupDiGetClassDevsW: no class"});
}

TEST_CASE("With \"system\", SetupAPI is the computer's own, whatever the machine's registry")
{
    Simulate({{"pnp", "system"}});
    const auto set = ::SetupDiGetClassDevsW(&displays, nullptr, nullptr, DIGCF_PRESENT);
    REQUIRE(set != INVALID_HANDLE_VALUE);
    CHECK(::SetupDiDestroyDeviceInfoList(set));
    CHECK(Trace().empty());
}
