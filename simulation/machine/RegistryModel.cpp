#include "machine/RegistryModel.h"

#include <algorithm>

#include "machine/Bytes.h"
#include "machine/Text.h"

namespace orvel::simulation {

namespace {

/// The keys of drivers, whose values the simulation can refuse: those that SetupDiOpenDevRegKey opens.
constexpr std::wstring_view driverKeys = L"system\\currentcontrolset\\control\\class\\";

RegistryValue TypedBytes(const Node& node)
{
    RegistryBytes value;
    bool hasBytes = false;
    node.ReadFields({
        {"type", Into(value.type)},
        {"hex",
         [&](const Node& digits) {
             hasBytes = true;
             value.bytes = BytesOf(digits);
         }},
    });
    if (!hasBytes) {
        node.Refuse("\"type\" needs \"hex\"");
    }
    return value;
}

RegistryValue Refusal(const Node& node, const std::string& path)
{
    if (!FoldCase(ToWide(path)).starts_with(driverKeys)) {
        node.Refuse("only values of drivers' keys, below SYSTEM\\CurrentControlSet\\Control\\Class, can be refused");
    }
    RegistryRefusal refusal;
    node.ReadFields({{"status", Into(refusal.status)}});
    if (refusal.status == 0) {
        node.Refuse("a status of 0 needs a value");
    }
    return refusal;
}

RegistryValue LongNumber(const Node& node)
{
    uint64_t number = 0;
    node.ReadFields({{"qword", Into(number)}});
    return number;
}

RegistryValue ValueOf(const Node& node, const std::string& path)
{
    if (node.IsText()) {
        return node.Text();
    }
    if (node.IsNumber()) {
        return static_cast<uint32_t>(node.Whole(0, UINT32_MAX));
    }
    if (node.HasKey("qword")) {
        return LongNumber(node);
    }
    if (node.HasKey("type")) {
        return TypedBytes(node);
    }
    if (node.HasKey("status")) {
        return Refusal(node, path);
    }
    if (!node.HasKey("hex")) {
        node.Refuse("expected a text, a number, {\"hex\": digits}, {\"qword\": number} or {\"status\": number}");
    }
    std::vector<uint8_t> bytes;
    node.ReadFields({{"hex", [&bytes](const Node& digits) { bytes = BytesOf(digits); }}});
    return bytes;
}

} // namespace

void ReadInto(const Node& node, RegistryModel& target)
{
    for (const auto& [path, key] : node.Members()) {
        if (path.empty() || path.starts_with('\\')) {
            key.Refuse("expected a key path below HKEY_LOCAL_MACHINE, without a backslash in front");
        }
        auto& values = target.keys.emplace_back(RegistryKeyModel{path, {}}).values;
        for (const auto& [name, value] : key.Members()) {
            values.emplace_back(name, ValueOf(value, path));
        }
    }
}

const RegistryKeyModel* RegistryModel::Find(const std::wstring& path) const
{
    const auto found = std::ranges::find_if(
        keys, [&](const RegistryKeyModel& key) { return FoldCase(ToWide(key.path)) == FoldCase(path); });
    return found == keys.end() ? nullptr : &*found;
}

} // namespace orvel::simulation
