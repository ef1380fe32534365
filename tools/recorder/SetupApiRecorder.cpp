// What SetupAPI answers is read by the inventory's own reader: it makes the same calls, and keeps each answer as it is.

#include "Interfaces.h"

#include <array>
#include <chrono>
#include <type_traits>

#include <setupapi.h>

#include "RegistryValue.h"
#include "platform/Handles.h"
#include "sources/SetupApi.h"

namespace orvel::recorder {

using namespace orvel::shared;

namespace {

using inventory::DeviceReading;
using inventory::DriverKeyReading;
using inventory::RawValue;

using Bytes = std::vector<unsigned char>;

constexpr char classKeys[] = "SYSTEM\\CurrentControlSet\\Control\\Class\\";
constexpr char displayClassName[] = "{4d36e968-e325-11ce-bfc1-08002be10318}";

// DEVPROP_TYPE_…
constexpr uint32_t uint32Type = 0x7, uint64Type = 0x9, fileTimeType = 0x10, booleanType = 0x11, stringType = 0x12,
                   binaryType = 0x1003, stringListType = 0x2012;

/// A property of a device, in the order of inventory::DeviceProperty: its key in a machine file, and the type that it has
/// there without saying so.
struct PropertyKey {
    const char* Name;
    uint32_t Type;
};

constexpr PropertyKey propertyKeys[] = {
    {"HardwareIds", stringListType},
    {"DeviceDesc", stringType},
    {"Service", stringType},
    {"BusNumber", uint32Type},
    {"Address", uint32Type},
    {"PowerData", binaryType},
    {"DevNodeStatus", uint32Type},
    {"ProblemCode", uint32Type},
    {"DriverDate", fileTimeType},
    {"DriverVersion", stringType},
    {"DriverInfPath", stringType},
    {"DriverProvider", stringType},
    {"SessionId", uint32Type},
    {"CurrentLinkSpeed", uint32Type},
    {"CurrentLinkWidth", uint32Type},
    {"MaxLinkSpeed", uint32Type},
    {"MaxLinkWidth", uint32Type},
    {"IndirectDisplay", booleanType},
    {"Luid", uint64Type},
    {"PhysicalAdapterIndex", uint32Type},
};
static_assert(std::size(propertyKeys) == inventory::devicePropertyCount);

/// In the order of inventory::DriverKeyValue.
constexpr const char* driverKeyNames[] = {
    "DriverDesc",
    "ProviderName",
    "DriverVersion",
    "InfPath",
    "DriverDateData",
    "RadeonSoftwareVersion",
    "HardwareInformation.qwMemorySize",
    "HardwareInformation.BiosString",
};
static_assert(std::size(driverKeyNames) == inventory::driverKeyValueCount);

/// The texts of a list that says no more than them.
std::optional<Json> PlainTexts(const Bytes& data)
{
    Json texts = Json::array();
    size_t start = 0;
    for (size_t end = 0; end + 1 < data.size(); end += sizeof(wchar_t)) {
        if (data[end] != 0 || data[end + 1] != 0) {
            continue;
        }
        const auto text = PlainText(Bytes(data.begin() + static_cast<std::ptrdiff_t>(start),
                                          data.begin() + static_cast<std::ptrdiff_t>(end + sizeof(wchar_t))));
        start = end + sizeof(wchar_t);
        if (text && text->empty()) { // the end of the list
            return start == data.size() ? std::optional(texts) : std::nullopt;
        }
        if (!text) {
            return std::nullopt;
        }
        texts.push_back(*text);
    }
    return std::nullopt;
}

template <typename Number>
std::optional<Number> PlainNumber(const Bytes& data)
{
    Number number = 0;
    if (data.size() != sizeof number) {
        return std::nullopt;
    }
    std::memcpy(&number, data.data(), sizeof number);
    return number;
}

/// "2024-05-09" for a FILETIME at the beginning of a day, else its number.
std::optional<Json> PlainDate(const Bytes& data)
{
    using namespace std::chrono;
    constexpr uint64_t ticksPerDay = 864'000'000'000, mostDays = 2'000'000; // years of four digits
    const auto ticks = PlainNumber<uint64_t>(data);
    if (!ticks || *ticks > INT64_MAX) {
        return std::nullopt;
    }
    if (*ticks % ticksPerDay != 0 || *ticks / ticksPerDay > mostDays) {
        return *ticks;
    }
    const year_month_day date(sys_days(year(1601) / January / 1) + days(*ticks / ticksPerDay));
    char text[16];
    std::snprintf(text, sizeof text, "%04d-%02u-%02u", static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()));
    return text;
}

/// The most recent state of a CM_POWER_DATA, which is all that anybody here reads from it.
std::optional<Json> PlainPower(const Bytes& data)
{
    constexpr size_t size = 56, statePlace = 4;
    constexpr const char* states[] = {"D0", "D1", "D2", "D3"};
    if (data.size() != size) {
        return std::nullopt;
    }
    uint32_t state = 0;
    std::memcpy(&state, data.data() + statePlace, sizeof state);
    return state >= 1 && state <= std::size(states) ? std::optional<Json>(states[state - 1]) : std::nullopt;
}

std::optional<Json> PlainFlag(const Bytes& data)
{
    const bool isFlag = data.size() == 1 && (data[0] == 0 || data[0] == 0xFF);
    return isFlag ? std::optional<Json>(data[0] != 0) : std::nullopt;
}

/// A value of the type that its key has.
std::optional<Json> PlainValue(uint32_t type, const Bytes& data)
{
    switch (type) {
    case stringType:
        return PlainText(data);
    case stringListType:
        return PlainTexts(data);
    case uint32Type:
        return PlainNumber<uint32_t>(data);
    case uint64Type:
        return PlainNumber<uint64_t>(data);
    case fileTimeType:
        return PlainDate(data);
    case booleanType:
        return PlainFlag(data);
    default:
        return PlainPower(data);
    }
}

/// Nothing for a property that the device does not have.
std::optional<Json> PropertyAnswer(const RawValue& value, uint32_t usualType)
{
    if (value.error != 0) {
        return value.error == ERROR_NOT_FOUND ? std::nullopt : std::optional(Json{{"status", value.error}});
    }
    const auto plain = value.type == usualType ? PlainValue(value.type, value.bytes) : std::nullopt;
    return plain.value_or(Json{{"type", value.type}, {"hex", Hex(value.bytes.data(), value.bytes.size())}});
}

/// A device whose instance id cannot be read needs one in a machine file.
void AddInstanceId(const RawValue& id, size_t index, Json& device)
{
    std::wstring text(id.bytes.size() / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), id.bytes.data(), text.size() * sizeof(wchar_t));
    text.resize(std::min(text.find(L'\0'), text.size()));
    device["instance_id"] = text.empty() ? Json("UNKNOWN\\" + std::to_string(index)) : Text(text);
    if (id.error != 0) {
        device["SetupDiGetDeviceInstanceIdW"] = id.error;
    }
}

Json DeviceOf(const DeviceReading& reading, size_t index)
{
    Json device = Json::object();
    AddInstanceId(reading.instanceId, index, device);
    for (size_t property = 0; property < inventory::devicePropertyCount; ++property) {
        const auto& [name, type] = propertyKeys[property];
        if (const auto answer = PropertyAnswer(reading.properties[property], type)) {
            device[name] = *answer;
        }
    }
    return device;
}

Json SectionOf(const inventory::SetupApiReading& reading)
{
    if (reading.error != 0 && reading.devices.empty()) {
        return {{"SetupDiGetClassDevsW", reading.error}};
    }
    Json section = Json::object();
    if (reading.error != 0) {
        section["SetupDiEnumDeviceInfo"] = reading.error;
    }
    section["devices"] = Json::array();
    for (const DeviceReading& device : reading.devices) {
        section["devices"].push_back(DeviceOf(device, section["devices"].size()));
    }
    return section;
}

/// The names of the devices' driver keys, which an inventory does not read: SetupAPI opens the keys for it.
std::vector<RawValue> DriverNames()
{
    constexpr GUID displayClass = {0x4d36e968, 0xe325, 0x11ce, {0xbf, 0xc1, 0x08, 0x00, 0x2b, 0xe1, 0x03, 0x18}};
    constexpr DEVPROPKEY driver = {{0xa45c254e, 0xdf1c, 0x4efd, {0x80, 0x20, 0x67, 0xd1, 0x46, 0xa8, 0x50, 0xe0}}, 11};
    std::vector<RawValue> names;
    const HDEVINFO set = ::SetupDiGetClassDevsW(&displayClass, nullptr, nullptr, DIGCF_PRESENT);
    if (set == INVALID_HANDLE_VALUE) {
        return names;
    }
    SP_DEVINFO_DATA device{};
    device.cbSize = sizeof device;
    for (DWORD index = 0; ::SetupDiEnumDeviceInfo(set, index, &device); ++index) {
        DEVPROPTYPE type = 0;
        DWORD bytes = 0;
        Bytes data(512);
        const auto size = static_cast<DWORD>(data.size());
        const bool isRead = ::SetupDiGetDevicePropertyW(set, &device, &driver, &type, data.data(), size, &bytes, 0);
        const DWORD error = isRead ? ERROR_SUCCESS : ::GetLastError();
        data.resize(isRead ? std::min(bytes, size) : 0);
        names.push_back({error, type, data});
    }
    ::SetupDiDestroyDeviceInfoList(set);
    return names;
}

Json ValuesOf(const DriverKeyReading& key)
{
    Json values = Json::object();
    for (size_t index = 0; index < inventory::driverKeyValueCount; ++index) {
        const RawValue& value = key.values[index];
        if (value.error == 0) {
            values[driverKeyNames[index]] = RegistryValue(value.type, value.bytes);
        } else if (value.error != ERROR_FILE_NOT_FOUND) {
            values[driverKeyNames[index]] = {{"status", value.error}};
        }
    }
    return values;
}

/// A name of the form that Windows gives, for a device that says no name for its key.
std::string MadeUpDriver(size_t index)
{
    char number[16];
    std::snprintf(number, sizeof number, "\\%04zu", 9000 + index);
    return displayClassName + std::string(number);
}

bool HasDriver(const Json& device)
{
    const auto driver = device.find("Driver");
    return driver != device.end() && driver->is_string() && !driver->get_ref<const std::string&>().empty();
}

void AddDriverKey(const DriverKeyReading& key, const RawValue& name, size_t index, PnpRecording& recording)
{
    Json& device = recording.Section["devices"][index];
    if (const auto answer = PropertyAnswer(name, stringType)) {
        device["Driver"] = *answer;
    }
    if (key.error != 0) {
        const bool isWithoutName = key.error == ERROR_NOT_FOUND && !device.contains("Driver");
        if (!isWithoutName) {
            device["SetupDiOpenDevRegKey"] = key.error;
        }
        return;
    }
    if (!HasDriver(device)) {
        device["Driver"] = MadeUpDriver(index);
    }
    recording.DriverKeys[classKeys + device["Driver"].get<std::string>()] = ValuesOf(key);
}

void AddDriverKeys(const inventory::DriverKeysReading& keys, PnpRecording& recording)
{
    std::vector<RawValue> names = DriverNames();
    RawValue unknown;
    unknown.error = ERROR_NOT_FOUND;
    names.resize(keys.size(), unknown);
    for (size_t index = 0; index < keys.size(); ++index) {
        AddDriverKey(keys[index], names[index], index, recording);
    }
}

void Read(WatchedThread<PnpRecording>& thread)
{
    PnpRecording recording;
    inventory::ReadDevices(
        [&](const inventory::SetupApiReading& reading) {
            recording.Section = SectionOf(reading);
            thread.Publish(recording, "pnp SetupDiOpenDevRegKey");
        },
        [&](const inventory::DriverKeysReading& keys) { AddDriverKeys(keys, recording); });
    thread.Publish(recording, "");
}

} // namespace

Recorded<PnpRecording> RecordPnp(uint32_t patienceMilliseconds)
{
    return RecordOnThread("pnp SetupDiGetClassDevsW", PnpRecording(), patienceMilliseconds, &Read);
}

} // namespace orvel::recorder
