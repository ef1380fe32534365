#include "Readings.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "matching/RawValues.h"

namespace orvel::shared::inventory {

namespace {

std::vector<unsigned char> Terminated(std::u16string_view text)
{
    std::vector<unsigned char> bytes((text.size() + 1) * sizeof(char16_t));
    std::memcpy(bytes.data(), text.data(), text.size() * sizeof(char16_t));
    return bytes;
}

} // namespace

std::vector<unsigned char> BytesOf(uint64_t number, std::size_t count)
{
    std::vector<unsigned char> bytes;
    for (std::size_t index = 0; index < count; ++index) {
        bytes.push_back(index < 8 ? static_cast<unsigned char>(number >> (8 * index) & 0xFF) : 0);
    }
    return bytes;
}

RawValue Refused(uint32_t error)
{
    return {error, 0, {}};
}

RawValue PropertyOf(std::u16string_view text)
{
    return {0, types::propertyString, Terminated(text)};
}

RawValue PropertyOf(const std::vector<std::u16string>& texts)
{
    RawValue value{0, types::propertyStringList, {}};
    for (const auto& text : texts) {
        const auto bytes = Terminated(text);
        value.bytes.insert(value.bytes.end(), bytes.begin(), bytes.end());
    }
    value.bytes.insert(value.bytes.end(), {0, 0});
    return value;
}

RawValue NumberProperty(uint32_t number)
{
    return {0, types::propertyUint32, BytesOf(number, 4)};
}

RawValue LongProperty(uint64_t number)
{
    return {0, types::propertyUint64, BytesOf(number, 8)};
}

RawValue BooleanProperty(bool isTrue)
{
    return {0, types::propertyBoolean, {static_cast<unsigned char>(isTrue ? 0xFF : 0)}};
}

RawValue PowerProperty(uint32_t state)
{
    RawValue value{0, types::propertyBinary, BytesOf(56, 56)};
    const auto bytes = BytesOf(state, 4);
    std::copy(bytes.begin(), bytes.end(), value.bytes.begin() + 4);
    return value;
}

RawValue FileTimeProperty(uint64_t ticks)
{
    return {0, types::propertyFileTime, BytesOf(ticks, 8)};
}

RawValue RegistryOf(std::u16string_view text)
{
    return {0, types::registryText, Terminated(text)};
}

RawValue RegistryBytes(uint32_t type, std::vector<unsigned char> bytes)
{
    return {0, type, std::move(bytes)};
}

RawValue& At(DeviceReading& device, DeviceProperty property)
{
    return device.properties[static_cast<std::size_t>(property)];
}

RawValue& At(DriverKeyReading& key, DriverKeyValue value)
{
    return key.values[static_cast<std::size_t>(value)];
}

DeviceReading BareDevice(std::u16string_view instanceId)
{
    DeviceReading device;
    device.instanceId = PropertyOf(instanceId);
    device.properties.fill(Refused(errorNotFound));
    return device;
}

DeviceReading GeForce(uint32_t bus, uint64_t luid)
{
    auto device = GeForceWithoutLuid(bus);
    At(device, DeviceProperty::Luid) = LongProperty(luid);
    At(device, DeviceProperty::PhysicalAdapterIndex) = NumberProperty(0);
    return device;
}

DeviceReading GeForceWithoutLuid(uint32_t bus)
{
    std::u16string id = u"PCI\\VEN_10DE&DEV_2504&SUBSYS_40741458&REV_A1\\4&0&";
    id += static_cast<char16_t>(u'0' + bus);
    auto device = BareDevice(id);
    At(device, DeviceProperty::HardwareIds) =
        PropertyOf(std::vector<std::u16string>{u"PCI\\VEN_10DE&DEV_2504&SUBSYS_40741458&REV_A1", u"PCI\\VEN_10DE&DEV_2504"});
    At(device, DeviceProperty::DeviceDesc) = PropertyOf(u"NVIDIA GeForce RTX 3060");
    At(device, DeviceProperty::Service) = PropertyOf(u"nvlddmkm");
    At(device, DeviceProperty::BusNumber) = NumberProperty(bus);
    At(device, DeviceProperty::Address) = NumberProperty(0);
    At(device, DeviceProperty::PowerData) = PowerProperty(1);
    At(device, DeviceProperty::DevNodeStatus) = NumberProperty(0x0180200A);
    At(device, DeviceProperty::DriverVersion) = PropertyOf(u"32.0.15.9672");
    At(device, DeviceProperty::DriverProvider) = PropertyOf(u"NVIDIA");
    At(device, DeviceProperty::DriverInfPath) = PropertyOf(u"oem12.inf");
    At(device, DeviceProperty::DriverDate) = FileTimeProperty(133'912'224'000'000'000);
    return device;
}

DriverKeyReading EmptyKey()
{
    DriverKeyReading key;
    key.values.fill(Refused(errorFileNotFound));
    return key;
}

DxgiAdapter GeForceAdapter(uint64_t luid, uint64_t dedicatedBytes)
{
    DxgiAdapter adapter;
    adapter.description = u"NVIDIA GeForce RTX 3060";
    adapter.vendorId = 0x10DE;
    adapter.deviceId = 0x2504;
    adapter.subsystemId = 0x40741458;
    adapter.revision = 0xA1;
    adapter.dedicatedVideoMemoryBytes = dedicatedBytes;
    adapter.sharedSystemMemoryBytes = 16 * gibibyte;
    adapter.luid = luid;
    return adapter;
}

Readings HealthyReadings()
{
    Readings readings;
    readings.ends.fill(NotAsked(Reason::Depth));
    for (const auto source : {Source::SetupApi, Source::DriverKey, Source::DisplayConfig, Source::Dxgi, Source::DxCore}) {
        readings.End(source) = Known(true);
    }
    return readings;
}

DisplayPath PathTo(uint64_t luid, std::u16string gdiName)
{
    DisplayPath path;
    path.luid = luid;
    path.gdiName = std::move(gdiName);
    path.monitor = u"DELL U2720Q";
    path.mode = SourceMode{3840, 2160, 0, 0};
    path.refreshNumerator = 60'000;
    path.refreshDenominator = 1'001;
    path.outputTechnology = 10;
    return path;
}

Readings TwoEqualCards()
{
    auto readings = HealthyReadings();
    readings.devices = {GeForce(1, 7), GeForce(2, 8)};
    readings.driverKeys = {EmptyKey(), EmptyKey()};
    At(readings.driverKeys[0], DriverKeyValue::BiosString) = RegistryOf(u"first");
    At(readings.driverKeys[1], DriverKeyValue::BiosString) = RegistryOf(u"second");
    DxgiAdapter software;
    software.description = u"Microsoft Basic Render Driver";
    software.vendorId = 0x1414;
    software.deviceId = 0x8C;
    software.luid = 9;
    software.flags = 2;
    readings.adapters = {GeForceAdapter(7, 12 * gibibyte), GeForceAdapter(8, 24 * gibibyte), software};
    readings.paths = {PathTo(7, u"\\\\.\\DISPLAY1"), PathTo(8, u"\\\\.\\DISPLAY10"), PathTo(8, u"\\\\.\\DISPLAY2")};
    readings.integrated = {{7, Known(false)}, {8, Known(true)}, {9, Known(false)}};
    return readings;
}

Answer AnswerOf(const Card& card, Property property)
{
    return card.Of(property);
}

std::vector<std::string> GdiNamesOf(const Card& card)
{
    std::vector<std::string> names;
    if (const auto* displays = std::get_if<Displays>(&card.Of(Property::Displays).data)) {
        for (const auto& display : *displays) {
            names.push_back(display.gdiName.value_or("?"));
        }
    }
    return names;
}

const Card& CardOf(const std::vector<Card>& cards, std::string_view instanceId)
{
    const auto found = std::find_if(cards.begin(), cards.end(),
                                    [&](const Card& card) { return TextOf(card.Of(Property::InstanceId)) == instanceId; });
    if (found == cards.end()) {
        throw std::runtime_error("no card " + std::string(instanceId));
    }
    return *found;
}

} // namespace orvel::shared::inventory
