#include "inventory/InventoryText.h"

#include <algorithm>
#include <string>

#include <doctest/doctest.h>

#include "inventory/Documents.h"

using namespace orvel::tests;
using namespace orvel::tools;

TEST_CASE("The text has a section per card, the failed sources and a summary")
{
    const OrderedJson sources = OrderedJson::array(
        {{{"name", "setupapi"}, {"state", "answered"}, {"code", nullptr}, {"reason", nullptr}},
         {{"name", "dxgi"}, {"state", "failed"}, {"code", 1460}, {"reason", "no answer"}},
         {{"name", "nvml"}, {"state", "unavailable"}, {"code", nullptr}, {"reason", "source not present"}}});
    const OrderedJson card = {{"name", Known("Card")},
                              {"driver_version", Known("1.2")},
                              {"dedicated_memory_bytes", Unknown("failed", "dxgi", "no answer", 1460)},
                              {"shared_memory_bytes", Unknown("failed", "dxgi", "no answer", 1460)}};
    CHECK(InventoryAsText(InventoryOf({card, card}, sources), false) == R"(Card 1: Card
    Driver                1.2
  Not known
    DXGI did not answer in time: dedicated_memory_bytes, shared_memory_bytes

Card 2: Card
    Driver                1.2
  Not known
    DXGI did not answer in time: dedicated_memory_bytes, shared_memory_bytes

DXGI did not answer in time.
2 cards, asked at depth drivers
)");
}

TEST_CASE("The text of a computer without cards has only a summary")
{
    CHECK(InventoryAsText(InventoryOf({}), false) == "No graphics adapter, asked at depth drivers\n");
}

TEST_CASE("A complete card fits a screen of 80 columns and 24 lines, and its heading is bold on a terminal")
{
    const std::string text = InventoryAsText(InventoryOf({WholeCard()}), true);
    CHECK(text.starts_with("\x1B[1mCard 1: NVIDIA GeForce RTX 4090\x1B[0m\n"));
    CHECK(std::count(text.begin(), text.end(), '\n') <= 24);
    CHECK(text.find("Not known") == std::string::npos);
}

TEST_CASE("A card's name cannot control the terminal, and a long property name has its own line")
{
    const std::string text = InventoryAsText(
        InventoryOf({{{"name", Known("a\x1B[2J")}, {"a_property_with_a_long_name", Known("value")}}}), false);
    CHECK(text == "Card 1: a\xEF\xBF\xBD[2J\n    a_property_with_a_long_name\n" + std::string(26, ' ') +
                      "value\n\n1 card, asked at depth drivers\n");
}
