#include <doctest/doctest.h>

#include "inventory/Documents.h"
#include "inventory/InventoryFormats.h"

using namespace orvel::tests;
using namespace orvel::tools;

namespace {

/// The second line of a table with this name alone.
std::string FieldOf(const std::string& name)
{
    const std::string csv = InventoryAsCsv(InventoryOf({{{"name", Known(name)}}}));
    REQUIRE(csv.starts_with("name\r\n"));
    return csv.substr(6, csv.size() - 8);
}

} // namespace

TEST_CASE("CSV has a header, and a row a card")
{
    const Inventory inventory =
        InventoryOf({{{"name", Known("A, B")},
                      {"dedicated_memory_bytes", Known(25'769'803'776)},
                      {"integrated", Known(true)},
                      {"core_count", Unknown("not asked", nullptr, "depth")},
                      {"displays", Known(OrderedJson::array())}},
                     {{"name", Unknown("unavailable", "setupapi", "no such value")},
                      {"dedicated_memory_bytes", Known(0)},
                      {"integrated", Known(false)},
                      {"core_count", Known(3)},
                      {"displays", Known(OrderedJson::array({DisplayObject({{"monitor_name", "TV"}, {"primary", true}}),
                                                             DisplayObject({{"monitor_name", "Beamer"}})}))}}});
    CHECK(InventoryAsCsv(inventory) == "name,dedicated_memory_bytes,integrated,core_count,displays\r\n"
                                       "\"A, B\",25769803776,true,,none\r\n"
                                       ",0,false,3,\"TV, primary; Beamer\"\r\n");
}

TEST_CASE("Fields with commas, quotes and line ends are quoted")
{
    CHECK(FieldOf("plain text") == "plain text");
    CHECK(FieldOf("a,b") == "\"a,b\"");
    CHECK(FieldOf("a \"b\"") == "\"a \"\"b\"\"\"");
    CHECK(FieldOf("a\r\nb") == "\"a\r\nb\"");
    CHECK(FieldOf("\xE7\xBF\xBB") == "\xE7\xBF\xBB");
}

TEST_CASE("A text that a spreadsheet would calculate begins with an apostrophe")
{
    CHECK(FieldOf("=cmd|' /C calc'!A0") == "'=cmd|' /C calc'!A0");
    CHECK(FieldOf("+1") == "'+1");
    CHECK(FieldOf("-1") == "'-1");
    CHECK(FieldOf("@SUM(A1)") == "'@SUM(A1)");
    CHECK(FieldOf("\t=1") == "'\t=1");
    CHECK(FieldOf("\r=1") == "\"'\r=1\"");
    CHECK(FieldOf("\n=1") == "\"'\n=1\"");
    CHECK(FieldOf("1=1") == "1=1");
    const Inventory inventory =
        InventoryOf({{{"displays", Known(OrderedJson::array({DisplayObject({{"monitor_name", "=1+1"}})}))}}});
    CHECK(InventoryAsCsv(inventory) == "displays\r\n'=1+1\r\n");
}

TEST_CASE("CSV without cards is a header")
{
    CHECK(InventoryAsCsv(Inventory{"system", TableOf({"name", "core_count"}), {}, {}}) == "name,core_count\r\n");
}
