#include "machine/PnpModel.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <set>

#include "machine/Bytes.h"
#include "machine/Text.h"

namespace orvel::simulation {

namespace {

using F = PropertyForm;

constexpr GUID device = {0xa45c254e, 0xdf1c, 0x4efd, {0x80, 0x20, 0x67, 0xd1, 0x46, 0xa8, 0x50, 0xe0}};
constexpr GUID state = {0x4340a6c5, 0x93fa, 0x4706, {0x97, 0x2c, 0x7b, 0x64, 0x80, 0x08, 0xa5, 0xa7}};
constexpr GUID driver = {0xa8b865dd, 0x2e3d, 0x4094, {0xad, 0x97, 0xe5, 0x93, 0xa7, 0x0c, 0x75, 0xd6}};
constexpr GUID presence = {0x540b947e, 0x8b40, 0x45bc, {0xa8, 0xa2, 0x6a, 0x0b, 0x89, 0x4c, 0xbd, 0xa2}};
constexpr GUID session = {0x83da6326, 0x97a6, 0x4088, {0x94, 0x53, 0xa1, 0x92, 0x3f, 0x57, 0x3b, 0x29}};
constexpr GUID pci = {0x3ab22e31, 0x8264, 0x4b4e, {0x9a, 0xf5, 0xa8, 0xd2, 0xd8, 0xe3, 0x3e, 0x62}};
constexpr GUID gpu = {0x60b193cb, 0x5276, 0x4d0f, {0x96, 0xfc, 0xf1, 0x73, 0xab, 0xad, 0x3e, 0xc6}};
constexpr GUID indirect = {0xc50a3f10, 0xaa5c, 0x4247, {0xb8, 0x30, 0xd6, 0xa6, 0xf8, 0xea, 0xa3, 0x10}};

// The types of properties (DEVPROP_TYPE_…) that are written here.
constexpr uint32_t uint32Type = 0x7, uint64Type = 0x9, fileTimeType = 0x10, booleanType = 0x11, stringType = 0x12,
                   statusType = 0x18, binaryType = 0x1003, stringListType = 0x2012;

constexpr size_t longestInstanceId = 199; // characters; Windows' MAX_DEVICE_ID_LEN counts the terminator

/// The FILETIME of "YYYY-MM-DD".
uint64_t FileTimeOf(const Node& node)
{
    using namespace std::chrono;
    const std::string text = node.Text();
    unsigned parts[3] = {};
    const char* place = text.data();
    const char* const end = place + text.size();
    for (unsigned& part : parts) {
        const auto [stop, error] = std::from_chars(place, end, part);
        place = stop != end && error == std::errc() ? stop + 1 : stop;
    }
    const year_month_day date{year(static_cast<int>(parts[0])), month(parts[1]), day(parts[2])};
    const bool isWellFormed = text.size() == 10 && text[4] == '-' && text[7] == '-' && place == end;
    if (!isWellFormed || !date.ok() || parts[0] < 1601) {
        node.Refuse("expected a number or a date such as \"2024-05-09\", found \"" + text + "\"");
    }
    constexpr uint64_t ticksPerDay = 864'000'000'000;
    return static_cast<uint64_t>((sys_days(date) - sys_days(year(1601) / January / 1)).count()) * ticksPerDay;
}

PropertyValue DateOf(const Node& node)
{
    const bool isDate = node.IsText() && node.Text().find('-') != std::string::npos;
    return {fileTimeType, BytesOf(isDate ? FileTimeOf(node) : node.Whole(0, INT64_MAX))};
}

/// A CM_POWER_DATA whose most recent state is this one.
PropertyValue PowerOf(const Node& node)
{
    constexpr size_t size = 56, statePlace = 4;
    const std::string text = node.Text();
    if (text.size() != 2 || text[0] != 'D' || text[1] < '0' || text[1] > '3') {
        node.Refuse("expected \"D0\", \"D1\", \"D2\" or \"D3\", found \"" + text + "\"");
    }
    PropertyValue value{binaryType, std::vector<uint8_t>(size)};
    value.bytes[0] = size;
    value.bytes[statePlace] = static_cast<uint8_t>(text[1] - '0' + 1);
    return value;
}

PropertyValue TextsOf(const Node& node)
{
    PropertyValue value{stringListType, {}};
    for (const Node& element : node.Elements()) {
        const std::wstring text = ToWide(element.Text());
        if (text.empty()) {
            element.Refuse("an empty text would end the list");
        }
        const auto bytes = BytesOf(text);
        value.bytes.insert(value.bytes.end(), bytes.begin(), bytes.end());
    }
    value.bytes.insert(value.bytes.end(), sizeof(wchar_t), 0);
    return value;
}

/// {"type": DEVPROP_TYPE_…, "hex": bytes}: exactly this.
PropertyValue ExactlyOf(const Node& node)
{
    PropertyValue value;
    node.ReadFields({
        {"type", Into(value.type)},
        {"hex", [&value](const Node& digits) { value.bytes = BytesOf(digits); }},
    });
    if (!node.HasKey("hex")) {
        node.Refuse("\"type\" needs \"hex\"");
    }
    return value;
}

PropertyValue BytesAlone(const Node& node)
{
    PropertyValue value{binaryType, {}};
    node.ReadFields({{"hex", [&value](const Node& digits) { value.bytes = BytesOf(digits); }}});
    return value;
}

PropertyValue ValueOf(const Node& node, PropertyForm form)
{
    if (node.HasKey("type")) {
        return ExactlyOf(node);
    }
    switch (form) {
    case F::Text:
        return {stringType, BytesOf(ToWide(node.Text()))};
    case F::Texts:
        return TextsOf(node);
    case F::Number:
        return {uint32Type, BytesOf(static_cast<uint32_t>(node.Whole(0, UINT32_MAX)))};
    case F::LongNumber:
        return {uint64Type, BytesOf(node.Whole(0, UINT64_MAX))};
    case F::Flag:
        return {booleanType, {static_cast<uint8_t>(node.Flag() ? 0xFF : 0)}};
    case F::Date:
        return DateOf(node);
    case F::Power:
        return PowerOf(node);
    case F::Status:
        return {statusType, BytesOf(static_cast<uint32_t>(node.StatusCode()))};
    case F::Bytes:
        break;
    }
    return BytesAlone(node);
}

void ReadProperty(const Node& node, PropertyForm form, Answer<PropertyValue>& target)
{
    target.given = true;
    const ReadField readValue = [&](const Node& value) { target.value = ValueOf(value, form); };
    if (!node.HasKey("status")) {
        return readValue(node);
    }
    node.ReadFields({
        {"status", [&target](const Node& status) { target.status = status.StatusCode(); }},
        {"value", readValue},
        {"writes", [&target](const Node& way) { ReadWrites(way, target.writes, false); }},
    });
}

void ReadPresence(const Node& node, DeviceModel& target)
{
    ReadProperty(node, F::Flag, target.properties["IsPresent"]);
    target.isPresent = node.IsObject() || node.Flag();
}

void CheckInstanceId(const Node& node, const std::string& id)
{
    if (!node.HasKey("instance_id")) {
        node.Refuse("a device needs \"instance_id\"");
    }
    if (id.empty() || ToWide(id).size() > longestInstanceId) {
        node.Refuse("an instance id has 1 to 199 characters");
    }
}

} // namespace

const std::vector<PropertyName>& PropertyNames()
{
    // One property a line.
    // clang-format off
    static const auto* const names = new std::vector<PropertyName>{
        {"DeviceDesc", device, 2, F::Text},
        {"HardwareIds", device, 3, F::Texts},
        {"CompatibleIds", device, 4, F::Texts},
        {"Service", device, 6, F::Text},
        {"Driver", device, 11, F::Text},
        {"FriendlyName", device, 14, F::Text},
        {"LocationInfo", device, 15, F::Text},
        {"UpperFilters", device, 19, F::Texts},
        {"BusNumber", device, 23, F::Number},
        {"EnumeratorName", device, 24, F::Text},
        {"Address", device, 30, F::Number},
        {"PowerData", device, 32, F::Power},
        {"LocationPaths", device, 37, F::Texts},
        {"DevNodeStatus", state, 2, F::Number},
        {"ProblemCode", state, 3, F::Number},
        {"Parent", state, 8, F::Text},
        {"ProblemStatus", state, 12, F::Status},
        {"DriverDate", driver, 2, F::Date},
        {"DriverVersion", driver, 3, F::Text},
        {"DriverDesc", driver, 4, F::Text},
        {"DriverInfPath", driver, 5, F::Text},
        {"MatchingDeviceId", driver, 8, F::Text},
        {"DriverProvider", driver, 9, F::Text},
        {"IsPresent", presence, 5, F::Flag},
        {"HasProblem", presence, 6, F::Flag},
        {"SessionId", session, 6, F::Number},
        {"BaseClass", pci, 3, F::Number},
        {"CurrentLinkSpeed", pci, 9, F::Number},
        {"CurrentLinkWidth", pci, 10, F::Number},
        {"MaxLinkSpeed", pci, 11, F::Number},
        {"MaxLinkWidth", pci, 12, F::Number},
        {"Luid", gpu, 2, F::LongNumber},
        {"PhysicalAdapterIndex", gpu, 3, F::Number},
        {"IndirectDisplay", indirect, 1, F::Flag},
        {"TerminalLuid", indirect, 2, F::Bytes},
        {"AdapterLuid", indirect, 3, F::Bytes},
        {"ActivityId", indirect, 4, F::Bytes},
    };
    // clang-format on
    return *names;
}

static void ReadInto(const Node& node, DeviceModel& target)
{
    Fields fields = {
        {"instance_id", Into(target.instanceId)},
        {"SetupDiEnumDeviceInfo", Into(target.enumDeviceInfo)},
        {"SetupDiGetDeviceInstanceIdW", Into(target.getInstanceId)},
        {"SetupDiOpenDevRegKey", Into(target.openDevRegKey)},
    };
    for (const PropertyName& each : PropertyNames()) {
        fields.emplace_back(each.name, [&target, &each](const Node& value) {
            ReadProperty(value, each.form, target.properties[each.name]);
        });
    }
    std::ranges::find(fields, "IsPresent", &Fields::value_type::first)->second = [&target](const Node& value) {
        ReadPresence(value, target);
    };
    node.ReadFields(fields);
    CheckInstanceId(node, target.instanceId);
}

static void ReadDevices(const Node& node, std::vector<DeviceModel>& target)
{
    std::set<std::wstring> ids;
    for (const Node& element : node.Elements()) {
        ReadInto(element, target.emplace_back());
        if (!ids.insert(FoldCase(ToWide(target.back().instanceId))).second) {
            element.Refuse("another device has the same instance id");
        }
    }
}

std::wstring DeviceModel::TextOf(const char* property) const
{
    const auto found = properties.find(property);
    if (found == properties.end() || found->second.status != 0 || !found->second.value ||
        found->second.value->type != stringType) {
        return {};
    }
    const auto& bytes = found->second.value->bytes;
    const std::wstring text(reinterpret_cast<const wchar_t*>(bytes.data()), bytes.size() / sizeof(wchar_t));
    return text.substr(0, text.find(L'\0'));
}

void ReadInto(const Node& node, PnpModel& target)
{
    node.ReadFields({
        {"SetupDiGetClassDevsW", Into(target.getClassDevs)},
        {"SetupDiEnumDeviceInfo", Into(target.enumDeviceInfo)},
        {"devices", [&target](const Node& devices) { ReadDevices(devices, target.devices); }},
    });
}

} // namespace orvel::simulation
