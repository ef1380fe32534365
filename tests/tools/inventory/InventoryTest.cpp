#include "inventory/Inventory.h"

#include <doctest/doctest.h>

#include "inventory/Documents.h"

using namespace orvel::tests;
using namespace orvel::tools;

TEST_CASE("A document is read with the types of the table")
{
    const Inventory inventory = InventoryOf({WholeCard()});
    REQUIRE(inventory.Cards.size() == 1);
    const InventoryCard& card = inventory.Cards[0];
    CHECK(inventory.Depth == "drivers");
    CHECK(KnownText(inventory, card, "name") == "NVIDIA GeForce RTX 4090");
    CHECK(*FindKnown<uint64_t>(inventory, card, "dedicated_memory_bytes") == 25'769'803'776);
    CHECK_FALSE(*FindKnown<bool>(inventory, card, "integrated"));
    const auto* displays = FindKnown<InventoryDisplays>(inventory, card, "displays");
    REQUIRE(displays->size() == 1);
    CHECK(displays->front().RefreshMillihertz == 59'940);
    CHECK(displays->front().IsPrimary == true);
    CHECK(FindValue(inventory, card, "colour") == nullptr);
    CHECK(FindKnown<bool>(inventory, card, "name") == nullptr);
}

TEST_CASE("A value that is not known has its status, source, code and reason")
{
    const Inventory inventory =
        InventoryOf({{{"name", Unknown("failed", "dxgi", "refused", 0x887A0004)}}},
                    OrderedJson::array({{{"name", "dxgi"}, {"state", "failed"}, {"code", 1460}, {"reason", "no answer"}}}));
    CHECK(inventory.Cards[0][0].End == InventoryEnd{"failed", "dxgi", 0x887A0004, "refused"});
    CHECK(KnownText(inventory, inventory.Cards[0], "name").empty());
    CHECK(NameOf(inventory, inventory.Cards[0]) == "Unnamed card");
    REQUIRE(inventory.Sources.size() == 1);
    CHECK(inventory.Sources[0] == InventoryEnd{"failed", "dxgi", 1460, "no answer"});
}

TEST_CASE("A text that is not an inventory document is refused")
{
    const OrderedJson document = {{"schema_version", 1},
                                  {"form", "full"},
                                  {"depth", "system"},
                                  {"sources", OrderedJson::array()},
                                  {"cards", OrderedJson::array()}};
    CHECK(ReadInventory(document.dump(), {}).Cards.empty());
    for (const char* broken : {"", "[]", "{", R"({"schema_version": 1})"}) {
        CHECK_THROWS_AS(ReadInventory(broken, {}), std::exception);
    }
    OrderedJson other = document;
    other["schema_version"] = 2;
    CHECK_THROWS_WITH(ReadInventory(other.dump(), {}), "not the full form of a document of version 1");
    other = document;
    other["form"] = "flat";
    CHECK_THROWS_AS(ReadInventory(other.dump(), {}), std::exception);
    other = document;
    other["cards"] = OrderedJson::array({OrderedJson::object()});
    CHECK_THROWS_AS(ReadInventory(other.dump(), TableOf({"name"})), std::exception);
}
