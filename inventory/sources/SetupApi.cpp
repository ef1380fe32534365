#include "sources/SetupApi.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <type_traits>

#include <windows.h>

#include <setupapi.h>

#include "platform/Handles.h"
#include "sources/DriverKey.h"

namespace orvel::shared::inventory {

namespace {

using enumeration::CloseWith;
using DeviceSet = std::unique_ptr<std::remove_pointer_t<HDEVINFO>, CloseWith<&::SetupDiDestroyDeviceInfoList>>;

constexpr GUID displayClass = {0x4d36e968, 0xe325, 0x11ce, {0xbf, 0xc1, 0x08, 0x00, 0x2b, 0xe1, 0x03, 0x18}};

constexpr GUID deviceFormat = {0xa45c254e, 0xdf1c, 0x4efd, {0x80, 0x20, 0x67, 0xd1, 0x46, 0xa8, 0x50, 0xe0}};
constexpr GUID statusFormat = {0x4340a6c5, 0x93fa, 0x4706, {0x97, 0x2c, 0x7b, 0x64, 0x80, 0x08, 0xa5, 0xa7}};
constexpr GUID driverFormat = {0xa8b865dd, 0x2e3d, 0x4094, {0xad, 0x97, 0xe5, 0x93, 0xa7, 0x0c, 0x75, 0xd6}};
constexpr GUID sessionFormat = {0x83da6326, 0x97a6, 0x4088, {0x94, 0x53, 0xa1, 0x92, 0x3f, 0x57, 0x3b, 0x29}};
constexpr GUID pciFormat = {0x3ab22e31, 0x8264, 0x4b4e, {0x9a, 0xf5, 0xa8, 0xd2, 0xd8, 0xe3, 0x3e, 0x62}};
constexpr GUID indirectFormat = {0xc50a3f10, 0xaa5c, 0x4247, {0xb8, 0x30, 0xd6, 0xa6, 0xf8, 0xea, 0xa3, 0x10}};
constexpr GUID luidFormat = {0x60b193cb, 0x5276, 0x4d0f, {0x96, 0xfc, 0xf1, 0x73, 0xab, 0xad, 0x3e, 0xc6}};

/// In the order of DeviceProperty.
constexpr DEVPROPKEY keys[] = {
    {deviceFormat, 3},   // HardwareIds
    {deviceFormat, 2},   // DeviceDesc
    {deviceFormat, 6},   // Service
    {deviceFormat, 23},  // BusNumber
    {deviceFormat, 30},  // Address
    {deviceFormat, 32},  // PowerData
    {statusFormat, 2},   // DevNodeStatus
    {statusFormat, 3},   // ProblemCode
    {driverFormat, 2},   // DriverDate
    {driverFormat, 3},   // DriverVersion
    {driverFormat, 5},   // DriverInfPath
    {driverFormat, 9},   // DriverProvider
    {sessionFormat, 6},  // SessionId
    {pciFormat, 9},      // CurrentLinkSpeed
    {pciFormat, 10},     // CurrentLinkWidth
    {pciFormat, 11},     // MaxLinkSpeed
    {pciFormat, 12},     // MaxLinkWidth
    {indirectFormat, 1}, // IndirectDisplay
    {luidFormat, 2},     // Luid
    {luidFormat, 3},     // PhysicalAdapterIndex
};
static_assert(std::size(keys) == devicePropertyCount);

/// A larger property or id is nothing that a driver means.
constexpr DWORD mostBytes = 65536;

/// The error of a call that has just failed; never 0, which would mean that it has not.
uint32_t LastError()
{
    const DWORD error = ::GetLastError();
    return error == ERROR_SUCCESS ? ERROR_GEN_FAILURE : error;
}

SP_DEVINFO_DATA DeviceData()
{
    SP_DEVINFO_DATA data{};
    data.cbSize = sizeof data;
    return data;
}

RawValue ReadProperty(HDEVINFO set, SP_DEVINFO_DATA& device, const DEVPROPKEY& key)
{
    RawValue value;
    value.bytes.resize(256);
    for (;;) {
        DEVPROPTYPE type = 0;
        DWORD needed = 0;
        const auto size = static_cast<DWORD>(value.bytes.size());
        if (::SetupDiGetDevicePropertyW(set, &device, &key, &type, value.bytes.data(), size, &needed, 0)) {
            value.type = type;
            value.bytes.resize(std::min(needed, size));
            return value;
        }
        value.error = LastError();
        if (value.error != ERROR_INSUFFICIENT_BUFFER || needed <= size || needed > mostBytes) {
            value.bytes.clear();
            return value;
        }
        value.error = 0;
        value.bytes.resize(needed);
    }
}

RawValue ReadInstanceId(HDEVINFO set, SP_DEVINFO_DATA& device)
{
    RawValue value;
    std::vector<wchar_t> text(512); // an instance id has 200 characters at most
    if (!::SetupDiGetDeviceInstanceIdW(set, &device, text.data(), static_cast<DWORD>(text.size()), nullptr)) {
        value.error = LastError();
        return value;
    }
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    value.bytes.assign(bytes, bytes + text.size() * sizeof(wchar_t));
    return value;
}

DeviceReading ReadDevice(HDEVINFO set, SP_DEVINFO_DATA& device)
{
    DeviceReading reading;
    reading.instanceId = ReadInstanceId(set, device);
    for (std::size_t property = 0; property < devicePropertyCount; ++property) {
        reading.properties[property] = ReadProperty(set, device, keys[property]);
    }
    return reading;
}

/// The devices of a set; `error` is 0 where they are all of them.
std::vector<SP_DEVINFO_DATA> DevicesOf(HDEVINFO set, uint32_t& error)
{
    std::vector<SP_DEVINFO_DATA> devices;
    auto device = DeviceData();
    for (DWORD index = 0; ::SetupDiEnumDeviceInfo(set, index, &device); ++index) {
        devices.push_back(device);
        device = DeviceData();
    }
    error = LastError();
    error = error == ERROR_NO_MORE_ITEMS ? 0 : error;
    return devices;
}

DriverKeyReading OpenAndReadDriverKey(HDEVINFO set, SP_DEVINFO_DATA& device)
{
    const auto key = ::SetupDiOpenDevRegKey(set, &device, DICS_FLAG_GLOBAL, 0, DIREG_DRV, KEY_READ);
    if (key != INVALID_HANDLE_VALUE) {
        return ReadDriverKey(enumeration::RegistryKey(key).get());
    }
    const uint32_t error = LastError();
    DriverKeyReading reading;
    reading.error = error == static_cast<uint32_t>(ERROR_KEY_DOES_NOT_EXIST) ? ERROR_NOT_FOUND : error;
    return reading;
}

} // namespace

void ReadDevices(const std::function<void(SetupApiReading)>& receiveDevices,
                 const std::function<void(DriverKeysReading)>& receiveKeys)
{
    SetupApiReading reading;
    const auto handle = ::SetupDiGetClassDevsW(&displayClass, nullptr, nullptr, DIGCF_PRESENT);
    if (handle == INVALID_HANDLE_VALUE) {
        reading.error = LastError();
        receiveDevices(std::move(reading));
        receiveKeys({});
        return;
    }
    const DeviceSet set(handle);
    auto devices = DevicesOf(set.get(), reading.error);
    for (auto& device : devices) {
        reading.devices.push_back(ReadDevice(set.get(), device));
    }
    receiveDevices(std::move(reading));

    DriverKeysReading driverKeys;
    for (auto& device : devices) {
        driverKeys.push_back(OpenAndReadDriverKey(set.get(), device));
    }
    receiveKeys(std::move(driverKeys));
}

} // namespace orvel::shared::inventory
