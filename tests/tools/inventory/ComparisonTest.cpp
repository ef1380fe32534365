#include "inventory/Comparison.h"

#include <doctest/doctest.h>

#include "inventory/Documents.h"

using namespace orvel::tests;
using namespace orvel::tools;

namespace {

constexpr char memoryTypeEnd[] = "The machine's memory has a type without a known transfer rate, usually DDR5 or LPDDR5.";

/// A healthy enumeration of these records.
Records RecordsOf(std::vector<RecordCard> cards)
{
    return {std::move(cards), {{"Intel", 0x8086, false, ""}, {"NVIDIA", 0x10DE, true, ""}, {"AMD", 0x1002, false, ""}}, ""};
}

RecordCard Record(const char* vendor, const char* device, const char* subsystem, const char* bus)
{
    return {vendor, {{"DeviceId", {device, "", ""}}, {"SubsystemId", {subsystem, "", ""}}, {"BusId", {bus, "", ""}}}};
}

/// A card of the inventory with these identifiers.
OrderedJson CardOf(unsigned vendor, unsigned device, unsigned subsystem, unsigned bus)
{
    return {{"instance_id", Known("A")},  {"kind", Known("pci")},       {"name", Known("Card")},
            {"vendor_id", Known(vendor)}, {"device_id", Known(device)}, {"subsystem_id", Known(subsystem)},
            {"pci_bus", Known(bus)},      {"problem_code", Known(0)}};
}

/// The comparison of the GeForce with a record that has one more value.
ComparedCard Compared(const OrderedJson& values, const char* field, const RecordValue& value, const char* vendor = "NVIDIA",
                      unsigned vendorId = 0x10DE)
{
    OrderedJson card = {{"vendor_id", Known(vendorId)}, {"device_id", Known(0x2684)}, {"subsystem_id", Known(0x889B1043)}};
    card.update(values);
    RecordCard record = Record(vendor, "2684", "889b-1043", "1");
    record.Values[field] = value;
    return Compare(InventoryOf({card}), RecordsOf({record})).Cards[0];
}

using Numbers = std::vector<size_t>;

} // namespace

TEST_CASE("A record belongs to the card with its vendor, device and subsystem")
{
    const Inventory inventory = InventoryOf({CardOf(0x8086, 0x4680, 0x86941043, 0), CardOf(0x10DE, 0x2504, 0x397D1462, 1)});
    const Comparison comparison = Compare(
        inventory, RecordsOf({Record("NVIDIA", "2504", "397d-1462", "1"), Record("Intel", "4680", "8694-1043", "0")}));
    CHECK(comparison.Cards[0].Records == Numbers{1});
    CHECK(comparison.Cards[1].Records == Numbers{0});
    CHECK(comparison.Cards[0].Note.empty());
    CHECK(comparison.Unknown.empty());
}

TEST_CASE("A record whose identifiers no card has is named, and assigned to none")
{
    const Inventory inventory = InventoryOf({CardOf(0x10DE, 0x2504, 0x397D1462, 1)});
    for (RecordCard record : {Record("NVIDIA", "2505", "397d-1462", "1"), Record("NVIDIA", "2504", "397d-1463", "1"),
                              Record("Intel", "2504", "397d-1462", "1"), Record("NVIDIA", "250", "", "1"),
                              Record("NVIDIA", "rubbish", "397d-1462", "1"), Record("Voodoo", "2504", "397d-1462", "1")}) {
        record.Values["CardName"].Text = "GeForce";
        const Comparison comparison = Compare(inventory, RecordsOf({record}));
        CHECK(comparison.Cards[0].Records.empty());
        REQUIRE(comparison.Unknown.size() == 1);
        CHECK(comparison.Unknown[0] == "The record has \"GeForce\", whose identifiers no card of the inventory has.");
    }
}

TEST_CASE("Equal cards are distinguished by the bus, in any order")
{
    const OrderedJson first = CardOf(0x1002, 0x73BF, 0x0E3A1002, 3);
    const OrderedJson second = CardOf(0x1002, 0x73BF, 0x0E3A1002, 45);
    const RecordCard on3 = Record("AMD", "73BF", "0E3A-1002", "3");
    const RecordCard on45 = Record("AMD", "73BF", "0E3A-1002", "45");
    Comparison comparison = Compare(InventoryOf({first, second}), RecordsOf({on45, on3}));
    CHECK(comparison.Cards[0].Records == Numbers{1});
    CHECK(comparison.Cards[1].Records == Numbers{0});
    comparison = Compare(InventoryOf({second, first}), RecordsOf({on45}));
    CHECK(comparison.Cards[0].Records == Numbers{0});
    CHECK(comparison.Cards[1].Records.empty());
}

TEST_CASE("Equal cards that the bus does not distinguish get no record")
{
    const RecordCard record = Record("AMD", "73BF", "0E3A-1002", "45");
    const auto note = [&](unsigned firstBus, const std::vector<RecordCard>& records) {
        const Inventory inventory =
            InventoryOf({CardOf(0x1002, 0x73BF, 0x0E3A1002, firstBus), CardOf(0x1002, 0x73BF, 0x0E3A1002, 45)});
        const Comparison comparison = Compare(inventory, RecordsOf(records));
        CHECK(comparison.Cards[0].Records.empty());
        CHECK(comparison.Cards[1].Records.empty());
        return comparison.Cards[1].Note;
    };
    CHECK(note(3, {record, record}) ==
          "The record has 2 entries for these 2 equal cards, which cannot be assigned: their PCI "
          "buses do not distinguish them.");
    CHECK_FALSE(note(45, {record}).empty());                                 // on two segments
    CHECK_FALSE(note(3, {Record("AMD", "73BF", "0E3A-1002", "7")}).empty()); // on no card's bus
}

TEST_CASE("A card that the record lists twice says so")
{
    const RecordCard record = Record("AMD", "73BF", "0E3A-1002", "45");
    const Comparison comparison =
        Compare(InventoryOf({CardOf(0x1002, 0x73BF, 0x0E3A1002, 45)}), RecordsOf({record, record}));
    CHECK(comparison.Cards[0].Records == Numbers{0, 1});
    CHECK(comparison.Cards[0].Note == "The record lists this card 2 times; the first is compared.");
}

TEST_CASE("A missing record has its reason")
{
    const auto note = [](const OrderedJson& card, const Records& records) {
        return Compare(InventoryOf({card}), records).Cards[0].Note;
    };
    Records ended = RecordsOf({});
    ended.Runs[0].End = memoryTypeEnd;
    CHECK(note(CardOf(0x8086, 0x4680, 1, 0), ended) == std::string("The record's run for Intel ended: ") + memoryTypeEnd);
    CHECK(note(CardOf(0x1AF4, 0x1050, 1, 0), ended) == "The record lists cards of Intel, NVIDIA and AMD only.");
    CHECK(note(CardOf(0x10DE, 0x2684, 1, 0), ended) ==
          "The record's run for NVIDIA did not list it; the view --explain has its log lines.");
    OrderedJson card = CardOf(0x10DE, 0x2684, 1, 0);
    card["problem_code"] = Known(22);
    CHECK(note(card, ended) == "Windows has problem 22 with the device, so that the vendor's driver does not list it.");
    card = CardOf(0x10DE, 0x2684, 1, 0);
    card["kind"] = Known("indirect");
    CHECK(note(card, ended) == "The record lists graphics hardware, and this adapter has none of its own.");
}

TEST_CASE("The second GPU of a vendor with one record has that as its reason")
{
    const Inventory inventory = InventoryOf({CardOf(0x10DE, 0x1E84, 0x87C1103C, 2), CardOf(0x10DE, 0x1E84, 0x87C1103C, 3)});
    const Comparison comparison = Compare(inventory, RecordsOf({Record("NVIDIA", "1e84", "87c1-103c", "2")}));
    CHECK(comparison.Cards[0].Records == Numbers{0});
    CHECK(comparison.Cards[1].Note == "The record lists one card of NVIDIA, the first.");
}

TEST_CASE("Without an enumeration there is its problem, and nothing is compared")
{
    const Comparison comparison = Compare(InventoryOf({CardOf(1, 2, 3, 4)}), {{}, {}, "a.dll cannot be loaded"});
    CHECK(comparison.Problem == "a.dll cannot be loaded");
    CHECK(comparison.Cards[0].Note.empty());
    CHECK(ComparisonAsText(InventoryOf({CardOf(1, 2, 3, 4)}), comparison, false) ==
          "There is no record to compare with: a.dll cannot be loaded\n");
}

TEST_CASE("Memory is compared in the record's whole units")
{
    const OrderedJson memory = {{"dedicated_memory_bytes", Known(16'384ULL * 1'048'576 + 1000)}};
    CHECK(Compared(memory, "MemorySize", {"16384", "MiB", ""}).Agreeing == 1);
    CHECK(Compared(memory, "MemorySize", {"16383", "MiB", ""}).Agreeing == 0);
    CHECK(Compared({{"shared_memory_bytes", Known(34'252'783'616)}}, "MemorySharedSize", {"31", "GiB", ""}).Agreeing == 1);
    CHECK(Compared({{"dedicated_memory_bytes", Known(5)}}, "MemorySize", {"5", "bytes (low 32 bits)", ""}).Agreeing == 1);
}

TEST_CASE("Dates, texts and numbers are compared each in its own way")
{
    CHECK(Compared({{"driver_date", Known("2022-09-07")}}, "DriverReleaseDate", {"20220907000000.000000-000", "", ""})
              .Agreeing == 1);
    CHECK(Compared({{"driver_date", Known("2022-09-08")}}, "DriverReleaseDate", {"20220907000000.000000-000", "", ""})
              .Agreeing == 0);
    CHECK(Compared({{"compute_capability", Known("8.6")}}, "CudaCapability", {"8.6", "", ""}).Agreeing == 1);
    CHECK(Compared({{"name", Known("A")}}, "CardName", {"a", "", ""}).Agreeing == 0);
}

TEST_CASE("A difference has both values, and why they differ")
{
    const auto only = [](const ComparedCard& card, const char* field) {
        for (const Difference& difference : card.Differences) {
            if (difference.Field == std::string(field)) {
                return difference;
            }
        }
        return Difference{};
    };
    const OrderedJson memory = {{"dedicated_memory_bytes", Known(25'769'803'776)}};
    Difference difference = only(Compared(memory, "AdapterRam", {"4095", "MiB", "WMI"}), "AdapterRam");
    CHECK(difference.Property == "dedicated_memory_bytes");
    CHECK(difference.RecordText == "4095 MiB");
    CHECK(difference.InventoryText == "24 GiB");
    CHECK(difference.Why == "The record has WMI's AdapterRAM, a 32-bit number, which ends at 4095 MB.");
    difference = only(Compared(memory, "AdapterRam", {"1024", "MiB", "WMI"}), "AdapterRam");
    CHECK(difference.Why == "The record has WMI's AdapterRAM, a 32-bit number that the driver leaves in the registry.");
    difference = only(Compared(memory, "MemorySize", {"", "bytes (low 32 bits)", "NVAPI"}), "MemorySize");
    CHECK(difference.RecordText.empty()); // the low 32 bits of 24 GiB are 0
    CHECK(difference.Why == "The record keeps the low 32 bits of the number of bytes.");
    difference =
        only(Compared({{"memory_type", Known("GDDR6")}}, "MemoryType", {"DDR4", "", "WMI"}, "AMD", 0x1002), "MemoryType");
    CHECK(difference.Why == "The record has the figure of the computer's memory modules.");
    difference = only(Compared({{"pcie_lanes", Known(16)}}, "PciLanes", {"", "", "none", false}), "PciLanes");
    CHECK(difference.Why == "The record has no source for it with this vendor.");
    difference = only(Compared({{"serial_number", Known("1")}}, "GraphicsCardSn", {"", "", "NVML nvmlDeviceGetSerial"}),
                      "GraphicsCardSn");
    CHECK(difference.Why == "The record's source, NVML nvmlDeviceGetSerial, returned nothing.");
    difference = only(Compared({{"name", Known("A", "setupapi")}}, "CardName", {"B", "", "NVAPI"}), "CardName");
    CHECK(difference.Why == "The record's source is NVAPI, the inventory's SetupAPI.");
}

TEST_CASE("What only the record has is named")
{
    const ComparedCard card = Compared({{"core_count", Unknown("not asked", nullptr, "depth")}}, "Cores", {"3584", "", ""});
    CHECK(card.OnlyInRecord == std::vector<std::string>{"Cores"});
    CHECK(card.Differences.empty());
}

TEST_CASE("The text and the JSON have each difference and its reason")
{
    const Inventory inventory = InventoryOf({{{"instance_id", Known("A")},
                                              {"name", Known("Card")},
                                              {"vendor_id", Known(0x10DE)},
                                              {"device_id", Known(0x2684)},
                                              {"subsystem_id", Known(0x889B1043)},
                                              {"pcie_lanes", Known(16)}}});
    RecordCard record = Record("NVIDIA", "2684", "889b-1043", "1");
    record.Values["PciLanes"] = {"8", "", "NVAPI"};
    record.Values["CardName"] = {"Card", "", "NVAPI"};
    const Comparison comparison = Compare(inventory, RecordsOf({record}));
    CHECK(ComparisonAsText(inventory, comparison, false) == R"(Card 1: Card
    pcie_lanes (PciLanes)
      record              8
      inventory           16
        The record's source is NVAPI, the inventory's SetupAPI.
    1 value is the same.

)");
    const auto json = OrderedJson::parse(ComparisonAsJson(inventory, comparison, R"({"schema_version": 1})"));
    CHECK(json["inventory"]["schema_version"] == 1);
    CHECK(json["cards"][0]["records"] == OrderedJson::array({0}));
    CHECK(json["cards"][0]["note"].is_null());
    CHECK(json["cards"][0]["agreeing"] == 1);
    CHECK(json["cards"][0]["differences"] ==
          OrderedJson::parse(R"([{"property": "pcie_lanes", "field": "PciLanes", "record": "8", "inventory": "16",
                                  "why": "The record's source is NVAPI, the inventory's SetupAPI."}])"));
}
