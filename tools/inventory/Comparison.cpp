// Records carry no instance id, so that they are assigned in groups of equal cards: all cards and records with the same
// vendor, device and subsystem. The cards of a group are distinguished by the PCI bus, or not at all.

#include "inventory/Comparison.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <optional>
#include <set>
#include <string_view>

#include "inventory/Facts.h"
#include "inventory/Units.h"

namespace orvel::tools {

namespace {

/// How a record's value and the inventory's are compared.
enum class Rule {
    Text,
    Number,
    Memory, ///< the record counts in whole units
    Date,   ///< 20220907000000.000000-000 and 2022-09-07
};

/// A value that both have.
struct Pair {
    const char* Field;
    const char* Property;
    Rule Compared;
    const char* WhyIntel = ""; ///< the reason for a difference; "" for the two sources
    const char* WhyNvidia = "";
    const char* WhyAmd = "";
};

constexpr char modules[] = "The record has the figure of the computer's memory modules.";
constexpr char lowBits[] = "The record keeps the low 32 bits of the number of bytes.";
constexpr char units[] = "The record has the number of OpenCL's compute units.";
constexpr char computer[] = "The record has the serial number of the computer.";
constexpr char adapterRam[] = "The record has WMI's AdapterRAM, a 32-bit number that the driver leaves in the registry.";
constexpr char adapterRamEnd[] = "The record has WMI's AdapterRAM, a 32-bit number, which ends at 4095 MB.";

constexpr Pair pairs[] = {
    {"CardName", "name", Rule::Text},
    {"MemorySize", "dedicated_memory_bytes", Rule::Memory, adapterRam, lowBits},
    {"AdapterRam", "dedicated_memory_bytes", Rule::Memory, adapterRam, adapterRam, adapterRam},
    {"MemorySharedSize", "shared_memory_bytes", Rule::Memory, "", lowBits},
    {"MemoryType", "memory_type", Rule::Text, modules, modules, modules},
    {"MemoryBusWidth", "memory_bus_width_bits", Rule::Number, modules},
    {"MemoryClockMax", "memory_clock_max_mhz", Rule::Number, modules, "", modules},
    {"GpuClockMax", "core_clock_max_mhz", Rule::Number},
    {"Cores", "core_count", Rule::Number, units},
    {"CudaCapability", "compute_capability", Rule::Number},
    {"DriverVersion", "driver_version", Rule::Text},
    {"DriverReleaseDate", "driver_date", Rule::Date},
    {"ConfigError", "problem_code", Rule::Number},
    {"BusId", "pci_bus", Rule::Number},
    {"PcieGeneration", "pcie_generation", Rule::Number},
    {"PciLanes", "pcie_lanes", Rule::Number},
    {"BiosVersion", "bios_version", Rule::Text},
    {"GraphicsCardSn", "serial_number", Rule::Text, computer, "", computer},
    {"TemperateSlowdown", "temperature_slowdown_celsius", Rule::Number},
    {"TemperatureShutdown", "temperature_shutdown_celsius", Rule::Number},
};

const RecordValue& ValueOf(const RecordCard& record, const char* field)
{
    static const RecordValue none = {};
    const auto value = record.Values.find(field);
    return value == record.Values.end() ? none : value->second;
}

/// A hexadecimal number that is all of the text; empty for any other text.
std::optional<uint64_t> HexNumber(const std::string& text)
{
    constexpr std::string_view digits = "0123456789ABCDEFabcdef";
    const bool isNumber = !text.empty() && text.size() <= 8 && text.find_first_not_of(digits) == std::string::npos;
    return isNumber ? std::optional<uint64_t>(std::strtoull(text.c_str(), nullptr, 16)) : std::nullopt;
}

/// The number of "8694-1043": the subsystem's device in the upper 16 bits, its vendor in the lower ones.
std::optional<uint64_t> SubsystemOf(const std::string& text)
{
    const size_t dash = text.find('-');
    const auto device = HexNumber(text.substr(0, dash));
    const auto vendor = dash == std::string::npos ? std::nullopt : HexNumber(text.substr(dash + 1));
    return device && vendor ? std::optional(*device << 16 | *vendor) : std::nullopt;
}

std::optional<uint64_t> NumberOf(const Inventory& inventory, const InventoryCard& card, const char* name)
{
    const auto* number = FindKnown<uint64_t>(inventory, card, name);
    return number ? std::optional(*number) : std::nullopt;
}

// --- which record belongs to which card
// ---------------------------------------------------------------------------------------

/// What cards and records are assigned by: vendor, device and subsystem.
using Identity = std::array<uint64_t, 3>;

std::optional<Identity> IdentityOf(const Inventory& inventory, const InventoryCard& card)
{
    const auto vendor = NumberOf(inventory, card, "vendor_id");
    const auto device = NumberOf(inventory, card, "device_id");
    const auto subsystem = NumberOf(inventory, card, "subsystem_id");
    return vendor && device && subsystem ? std::optional(Identity{*vendor, *device, *subsystem}) : std::nullopt;
}

const RecordRun* RunOf(const Records& records, const std::string& vendor)
{
    const auto run =
        std::find_if(records.Runs.begin(), records.Runs.end(), [&](const RecordRun& each) { return each.Vendor == vendor; });
    return run == records.Runs.end() ? nullptr : &*run;
}

std::optional<Identity> IdentityOf(const Records& records, const RecordCard& record)
{
    const RecordRun* run = RunOf(records, record.Vendor);
    const auto device = HexNumber(ValueOf(record, "DeviceId").Text);
    const auto subsystem = SubsystemOf(ValueOf(record, "SubsystemId").Text);
    return run && device && subsystem ? std::optional(Identity{run->VendorId, *device, *subsystem}) : std::nullopt;
}

/// Equal cards, and the records of such cards.
struct Group {
    std::vector<size_t> Cards;
    std::vector<size_t> Records;
};

using Groups = std::map<Identity, Group>;

Groups GroupsOf(const Inventory& inventory, const Records& records)
{
    Groups groups;
    for (size_t i = 0; i < inventory.Cards.size(); ++i) {
        if (const auto identity = IdentityOf(inventory, inventory.Cards[i])) {
            groups[*identity].Cards.push_back(i);
        }
    }
    for (size_t i = 0; i < records.Cards.size(); ++i) {
        if (const auto identity = IdentityOf(records, records.Cards[i])) {
            groups[*identity].Records.push_back(i);
        }
    }
    return groups;
}

/// The card of a group on each record's bus; empty where that does not assign each record to a card of its own.
std::vector<size_t> CardsByBus(const Inventory& inventory, const Records& records, const Group& group)
{
    std::vector<size_t> assigned;
    for (const size_t record : group.Records) {
        std::vector<size_t> candidates;
        std::copy_if(group.Cards.begin(), group.Cards.end(), std::back_inserter(candidates), [&](size_t card) {
            const auto bus = NumberOf(inventory, inventory.Cards[card], "pci_bus");
            return bus && std::to_string(*bus) == ValueOf(records.Cards[record], "BusId").Text;
        });
        if (candidates.size() != 1) {
            return {};
        }
        assigned.push_back(candidates.front());
    }
    const std::set<size_t> different(assigned.begin(), assigned.end());
    return different.size() == assigned.size() ? assigned : std::vector<size_t>();
}

void AssignEqualCards(const Inventory& inventory, const Records& records, const Group& group, Comparison& comparison)
{
    const std::vector<size_t> assigned = CardsByBus(inventory, records, group);
    for (size_t i = 0; i < assigned.size(); ++i) {
        comparison.Cards[assigned[i]].Records.push_back(group.Records[i]);
    }
    for (const size_t card : assigned.empty() ? group.Cards : std::vector<size_t>()) {
        comparison.Cards[card].Note = "The record has " + std::to_string(group.Records.size()) + " entries for these " +
                                      std::to_string(group.Cards.size()) +
                                      " equal cards, which cannot be assigned: their PCI buses do not distinguish them.";
    }
}

void Assign(const Inventory& inventory, const Records& records, Comparison& comparison)
{
    for (const auto& [identity, group] : GroupsOf(inventory, records)) {
        if (group.Cards.size() == 1) {
            comparison.Cards[group.Cards.front()].Records = group.Records;
        } else if (!group.Records.empty() && !group.Cards.empty()) {
            AssignEqualCards(inventory, records, group, comparison);
        }
    }
    const Groups groups = GroupsOf(inventory, records);
    for (const RecordCard& record : records.Cards) {
        const auto identity = IdentityOf(records, record);
        if (!identity || groups.at(*identity).Cards.empty()) {
            comparison.Unknown.push_back("The record has \"" + PrintableText(ValueOf(record, "CardName").Text) +
                                         "\", whose identifiers no card of the inventory has.");
        }
    }
}

// --- why there is no record
// ---------------------------------------------------------------------------------------------------

/// The vendor whose run would list a card; null for none.
const RecordRun* RunFor(const Inventory& inventory, const InventoryCard& card, const Records& records)
{
    const auto vendorId = NumberOf(inventory, card, "vendor_id");
    const auto run = std::find_if(records.Runs.begin(), records.Runs.end(),
                                  [&](const RecordRun& each) { return vendorId && each.VendorId == *vendorId; });
    return run == records.Runs.end() ? nullptr : &*run;
}

bool HasRecord(const Records& records, const std::string& vendor)
{
    return std::any_of(records.Cards.begin(), records.Cards.end(),
                       [&](const RecordCard& record) { return record.Vendor == vendor; });
}

std::string VendorsText(const Records& records)
{
    std::string text;
    for (size_t i = 0; i < records.Runs.size(); ++i) {
        text += (i == 0 ? "" : i + 1 == records.Runs.size() ? " and " : ", ") + records.Runs[i].Vendor;
    }
    return text;
}

std::string WhyNoRecord(const Inventory& inventory, const InventoryCard& card, const Records& records)
{
    const std::string kind = KnownText(inventory, card, "kind");
    const RecordRun* run = RunFor(inventory, card, records);
    if (kind == "indirect" || kind == "remote" || kind == "software") {
        return "The record lists graphics hardware, and this adapter has none of its own.";
    }
    if (!run) {
        return "The record lists cards of " + VendorsText(records) + " only.";
    }
    if (run->HasOneRecord && HasRecord(records, run->Vendor)) {
        return "The record lists one card of " + run->Vendor + ", the first.";
    }
    if (!run->End.empty()) {
        return "The record's run for " + run->Vendor + " ended: " + run->End;
    }
    const auto problem = NumberOf(inventory, card, "problem_code");
    if (problem && *problem != 0) {
        return "Windows has problem " + std::to_string(*problem) +
               " with the device, so that the vendor's driver does not list it.";
    }
    return "The record's run for " + run->Vendor + " did not list it; the view --explain has its log lines.";
}

// --- what differs
// -------------------------------------------------------------------------------------------------------------

/// Bytes of a record's unit.
double UnitBytes(const std::string& unit)
{
    return unit == "GiB" ? 1024.0 * 1024 * 1024 : unit == "MiB" ? 1024.0 * 1024 : 1;
}

bool IsSameMemory(const RecordValue& value, uint64_t bytes)
{
    const double unit = UnitBytes(value.Unit);
    return std::floor(static_cast<double>(bytes) / unit) == std::strtod(value.Text.c_str(), nullptr);
}

/// A date without dashes; the record's time of day is left out.
std::string DateDigits(std::string date)
{
    std::erase(date, '-');
    return date.substr(0, 8);
}

struct PlainText {
    std::string operator()(const std::string& text) const { return text; }
    std::string operator()(uint64_t number) const { return std::to_string(number); }
    std::string operator()(const auto&) const { return {}; }
};

bool IsSame(const Pair& pair, const RecordValue& record, const InventoryValue& value)
{
    const std::string text = std::visit(PlainText(), value.Data);
    switch (pair.Compared) {
    case Rule::Memory:
        return IsSameMemory(record, *std::get_if<uint64_t>(&value.Data));
    case Rule::Date:
        return DateDigits(record.Text) == DateDigits(text);
    case Rule::Number:
        return std::strtod(record.Text.c_str(), nullptr) == std::strtod(text.c_str(), nullptr);
    case Rule::Text:
        break;
    }
    return record.Text == text;
}

std::string InventoryText(const Pair& pair, const InventoryValue& value, const std::string& unit)
{
    if (pair.Compared == Rule::Memory) {
        return BytesText(*std::get_if<uint64_t>(&value.Data));
    }
    return PrintableText(std::visit(PlainText(), value.Data)) + (unit.empty() ? "" : " " + unit);
}

std::string RecordText(const RecordValue& value)
{
    const std::string unit = value.Unit.substr(0, value.Unit.find(" (")); // without a remark
    return value.Text.empty() ? "" : PrintableText(value.Text) + (unit.empty() ? "" : " " + unit);
}

std::string WhyDifferent(const Pair& pair, const RecordCard& record, const InventoryValue& value)
{
    const RecordValue& recorded = ValueOf(record, pair.Field);
    const char* why = record.Vendor == "Intel" ? pair.WhyIntel : record.Vendor == "NVIDIA" ? pair.WhyNvidia : pair.WhyAmd;
    if (!recorded.HasSource) {
        return "The record has no source for it with this vendor.";
    }
    if (*why != '\0') {
        return why == adapterRam && recorded.Text == "4095" ? adapterRamEnd : why;
    }
    if (recorded.Text.empty()) {
        return "The record's source, " + recorded.Source + ", returned nothing.";
    }
    return "The record's source is " + recorded.Source + ", the inventory's " + SourceTitle(value.End.Source) + ".";
}

void CompareValues(const Inventory& inventory, const InventoryCard& card, const RecordCard& record, ComparedCard& compared)
{
    for (const Pair& pair : pairs) {
        const InventoryValue* value = FindValue(inventory, card, pair.Property);
        const RecordValue& recorded = ValueOf(record, pair.Field);
        if (!value || std::holds_alternative<std::monostate>(value->Data)) {
            if (value && !recorded.Text.empty()) {
                compared.OnlyInRecord.emplace_back(pair.Field);
            }
        } else if (!recorded.Text.empty() && IsSame(pair, recorded, *value)) {
            ++compared.Agreeing;
        } else {
            const auto& property = inventory.Table[static_cast<size_t>(value - card.data())];
            compared.Differences.push_back({pair.Property, pair.Field, RecordText(recorded),
                                            InventoryText(pair, *value, property.Unit), WhyDifferent(pair, record, *value)});
        }
    }
}

} // namespace

Comparison Compare(const Inventory& inventory, const Records& records)
{
    Comparison comparison{std::vector<ComparedCard>(inventory.Cards.size()), {}, records.Problem};
    if (!records.Problem.empty()) {
        return comparison;
    }
    Assign(inventory, records, comparison);
    for (size_t i = 0; i < inventory.Cards.size(); ++i) {
        ComparedCard& card = comparison.Cards[i];
        if (card.Records.size() > 1) {
            card.Note =
                "The record lists this card " + std::to_string(card.Records.size()) + " times; the first is compared.";
        } else if (card.Records.empty() && card.Note.empty()) {
            card.Note = WhyNoRecord(inventory, inventory.Cards[i], records);
        }
        if (!card.Records.empty()) {
            CompareValues(inventory, inventory.Cards[i], records.Cards[card.Records.front()], card);
        }
    }
    return comparison;
}

} // namespace orvel::tools
