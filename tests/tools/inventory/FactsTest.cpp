#include "inventory/Facts.h"

#include <doctest/doctest.h>

#include "inventory/Documents.h"

using namespace orvel::tests;
using namespace orvel::tools;

namespace {

/// The facts of a card as "label: text".
std::vector<std::string> FactsOf(const OrderedJson& card)
{
    const Inventory inventory = InventoryOf({card});
    std::vector<std::string> texts;
    for (const Fact& fact : orvel::tools::FactsOf(inventory, inventory.Cards[0])) {
        texts.push_back(fact.Label + ": " + fact.Text);
    }
    return texts;
}

/// The facts of a card with only these values.
std::vector<std::string> FactsOfValues(const OrderedJson& values)
{
    OrderedJson card;
    for (const auto& item : values.items()) {
        card[item.key()] = Known(item.value());
    }
    return FactsOf(card);
}

using Texts = std::vector<std::string>;

} // namespace

TEST_CASE("Related values share a fact, in readable units")
{
    CHECK(FactsOf(WholeCard()) ==
          Texts{"Kind: NVIDIA, PCI device, discrete", "Memory: 24 GiB dedicated, 24 GiB on the board, up to 31.9 GiB shared",
                "Video memory: GDDR6X, 384 bits, up to 10.5 GHz", "Cores: 16384, up to 2.52 GHz, compute capability 8.9",
                "Driver: 596.72 (32.0.15.9672), 2026-01-05, NVIDIA", "Driver files: oem12.inf, service nvlddmkm",
                "State: works, D0", "Display 1: DELL U2720Q (\\\\.\\DISPLAY1), 3840 x 2160, 59.94 Hz, DisplayPort, primary",
                "PCI Express: generation 1, 8 lanes; at most generation 4, 16 lanes",
                "Temperature limits: slows down at 88 \xC2\xB0"
                "C, shuts down at 92 \xC2\xB0"
                "C",
                "ECC: on, 3 corrected errors, 0 uncorrected errors", "BIOS: 95.02.3C.80.9A", "Serial number: 0324518003361",
                "UUID: GPU-1f8a7f0e-0d5b-6a43-9b4c-0b6a7c1d2e3f",
                "Identifiers: 0000:01:00.0, 10DE:2684, subsystem 1043:889B, revision A1", "LUID: 0xC1F2",
                "Instance id: PCI\\VEN_10DE&DEV_2684&SUBSYS_889B1043&REV_A1\\4&2283F625&0&0019"});
}

TEST_CASE("A fact omits unknown values, and is omitted if no value is known")
{
    CHECK(FactsOfValues({{"dedicated_system_memory_bytes", 134'217'728}}) ==
          Texts{"Memory: 128 MiB of the system's reserved"});
    CHECK(FactsOfValues({{"dedicated_memory_bytes", 0}}) == Texts{"Memory: 0 bytes dedicated"});
    CHECK(FactsOfValues({{"driver_version", "27.20.100.9168"}}) == Texts{"Driver: 27.20.100.9168"});
    CHECK(FactsOfValues({{"pci_bus", 1}}).empty()); // a bus alone is not an address
    CHECK(FactsOf({{"memory_type", Unknown("unsupported", nullptr, "no source for this vendor")}}).empty());
}

TEST_CASE("A problem and a sleeping card are named")
{
    CHECK(FactsOfValues({{"problem_code", 22}, {"problem", "DISABLED"}}) == Texts{"State: problem 22 (DISABLED)"});
    CHECK(FactsOfValues({{"problem_code", 99}}) == Texts{"State: problem 99"});
    CHECK(FactsOfValues({{"problem_code", 0}, {"problem", "none"}, {"power_state", "D3"}}) ==
          Texts{"State: works, asleep (D3)"});
}

TEST_CASE("A card without displays has a fact for it, and a display shows its known values")
{
    CHECK(FactsOfValues({{"displays", OrderedJson::array()}}) == Texts{"Displays: none active"});
    CHECK(FactsOfValues({{"displays", OrderedJson::array({DisplayObject({{"gdi_name", "\\\\.\\DISPLAY2"}, {"width", 800}}),
                                                          DisplayObject({{"monitor_name", "TV"}, {"primary", false}})})}}) ==
          Texts{"Display 1: \\\\.\\DISPLAY2", "Display 2: TV"});
}

TEST_CASE("A kind or property of a later release is shown unchanged")
{
    CHECK(FactsOfValues({{"kind", "quantum"}}) == Texts{"Kind: quantum"});
    CHECK(FactsOfValues({{"name", "Card"}, {"fans", 3}, {"colour", "red"}}) == Texts{"fans: 3 rpm", "colour: red"});
}

TEST_CASE("Missing values are grouped by their reason")
{
    const Inventory inventory = InventoryOf({{{"name", Known("Card")},
                                              {"dedicated_memory_bytes", Unknown("failed", "dxgi", "no answer", 1460)},
                                              {"board_memory_bytes", Unknown("not asked", nullptr, "depth")},
                                              {"shared_memory_bytes", Unknown("failed", "dxgi", "no answer", 1460)},
                                              {"core_count", Unknown("failed", "nvml", "refused", 15)}}});
    const auto missing = MissingOf(inventory, inventory.Cards[0]);
    REQUIRE(missing.size() == 3);
    CHECK(missing[0].Why == "DXGI did not answer in time");
    CHECK(missing[0].Names == Texts{"dedicated_memory_bytes", "shared_memory_bytes"});
    CHECK(missing[1].Why == "Not asked at this depth");
    CHECK(missing[2].Why == "NVML refused (15)");
}

TEST_CASE("An unknown reason or source is shown unchanged")
{
    CHECK(EndText({"unavailable", "vulkan", {}, "not listed"}) == "Vulkan does not list this card");
    CHECK(EndText({"unavailable", "dxgi", {}, "eclipse"}) == "Eclipse");
    CHECK(EndText({"unavailable", "driver_key", {}, "no such value"}) == "The driver's registry key has no such value");
}
