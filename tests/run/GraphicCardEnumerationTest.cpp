#include "GraphicCardEnumeration.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>
#include <set>

#include <doctest/doctest.h>

#include "GraphicCardInfo.h"
#include "GraphicCardLog.h"
#include "support/Enumerated.h"

using namespace orvel::tests;
using orvel::shared::enumeration::GraphicCardEnumeration;

TEST_CASE("On a machine without adapters of the three vendors there are no records")
{
    Json machine = HealthyLaptop();
    machine["wmi"]["classes"]["Win32_VideoController"] = Json::array();
    Simulate(machine);
    GraphicCardEnumeration enumeration;
    enumeration.QueryGraphicCards();
    CHECK(enumeration.size() == 0);
    CHECK(enumeration.get(0) == nullptr);
}

TEST_CASE("An index outside the records returns null")
{
    Simulate(Machine("intel-desktop"));
    GraphicCardEnumeration enumeration;
    enumeration.QueryGraphicCards();
    REQUIRE(enumeration.size() == 2);
    CHECK(enumeration.get(-1) == nullptr);
    CHECK(enumeration.get(INT_MIN) == nullptr);
    CHECK(enumeration.get(2) == nullptr);
    CHECK(enumeration.get(INT_MAX) == nullptr);
    CHECK(std::string(enumeration.get(1)->GetCardName()) == "Intel(R) Arc(TM) A770 Graphics");
}

TEST_CASE("A second query appends a second set of records")
{
    Simulate(HealthyLaptop());
    GraphicCardEnumeration enumeration;
    enumeration.QueryGraphicCards();
    const auto* first = enumeration.get(0);
    enumeration.QueryGraphicCards();
    CHECK(enumeration.size() == 2);
    CHECK(enumeration.get(0) == first);
    CHECK(enumeration.get(1) != first);
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations" // the assignment is deprecated
TEST_CASE("An assigned enumeration intentionally refers to the source's records")
{
    Simulate(HealthyLaptop());
    GraphicCardEnumeration source;
    source.QueryGraphicCards();
    alignas(GraphicCardEnumeration) unsigned char storage[sizeof(GraphicCardEnumeration)];
    auto* target = new (storage) GraphicCardEnumeration;
    CHECK(&(*target = source) == target);
    CHECK(target->size() == 1);
    CHECK(target->get(0) == source.get(0));
    // both share their list, so only one may be destroyed
}
#pragma GCC diagnostic pop

TEST_CASE("A destroyed enumeration has no list, and destroying it again releases nothing")
{
    Simulate(HealthyLaptop());
    alignas(GraphicCardEnumeration) unsigned char storage[sizeof(GraphicCardEnumeration)];
    auto* const cards = new (storage) GraphicCardEnumeration;
    cards->QueryGraphicCards();
    cards->~GraphicCardEnumeration();
    void* list = storage;
    std::memcpy(&list, storage, sizeof(list));
    CHECK(list == nullptr);
    cards->~GraphicCardEnumeration();
}

TEST_CASE("An exception that ends a vendor's run is logged once, and the other vendors run in their order")
{
    Json machine = Machine("workstation");
    machine["wmi"]["classes"]["Win32_VideoController"][2]["AdapterRAM"] = nullptr; // Intel's row
    const Enumerated result = Enumerate(machine);
    REQUIRE(result.Cards.size() == 2);
    CHECK(result.Card(0)["Manufacturer"] == "Nvidia");
    CHECK(result.Card(1)["Manufacturer"] == "AMD");
    const std::string unexpected =
        Line("error", "GraphicCardEnumeration::QueryGraphicCards", "Unexpected error occurred: invalid stoi argument");
    CHECK(result.Log.front() == unexpected);
    CHECK(std::count(result.Log.begin(), result.Log.end(), unexpected) == 1);
    CHECK(std::count_if(result.Log.begin(), result.Log.end(), [](const std::string& line) {
              return line.find("GraphicCardEnumeration::QueryGraphicCards") != std::string::npos;
          }) == 1);
    CHECK(result.Thrown == nullptr);
}

TEST_CASE("Records are grouped by vendor: Intel, NVIDIA, AMD")
{
    const Enumerated result = Enumerate(Machine("workstation"));
    REQUIRE(result.Cards.size() == 3);
    CHECK(result.Card(0)["Manufacturer"] == "Intel");
    CHECK(result.Card(1)["Manufacturer"] == "Nvidia");
    CHECK(result.Card(2)["Manufacturer"] == "AMD");
}

TEST_CASE("A thrown status reaches the host, and all objects and sessions are released")
{
    Json machine = HealthyLaptop();
    machine["wmi"]["failures"] = {{{"contains", "SELECT TotalWidth"}, {"status", "0x80041001"}}};
    const Enumerated result = Enumerate(machine);
    CHECK(result.Cards.empty());
    CHECK(result.Thrown == Json{{"type", "long"}, {"value", static_cast<int32_t>(0x80041001)}});
    CHECK(result.Log.empty());
    CHECK(result.Live.at("wmi") == 0);
}

TEST_CASE("Zero-filling an enumeration stops at the given size")
{
    alignas(GraphicCardEnumeration) unsigned char storage[sizeof(GraphicCardEnumeration)] = {0xAA};
    reinterpret_cast<GraphicCardEnumeration*>(storage)->__autoclassinit2(sizeof(storage));
    CHECK(storage[0] == 0);
}

TEST_CASE("The host receives lines of the requested severities only, and no lines after it removes its callback")
{
    Simulate(Machine("nvidia-desktop"));
    LogLines lines;
    const auto take = [](int severity, const char*, const char*, void* context) {
        static_cast<LogLines*>(context)->push_back(std::to_string(severity));
    };
    SetGraphicCardLog(take, 2, &lines);
    GraphicCardEnumeration().QueryGraphicCards();
    CHECK(lines.size() == 10); // three ECC lines, two of the memory, the serial number's, and AMD's four
    for (const std::string& severity : lines) {
        CHECK(severity == "2");
    }
    SetGraphicCardLog(nullptr, 6, nullptr);
    GraphicCardEnumeration().QueryGraphicCards();
    CHECK(lines.size() == 10);
}

TEST_CASE("An enumeration connects to WMI once, at its first query, and releases the connection at its end")
{
    const Enumerated result = Enumerate(Machine("workstation"));
    const auto calls = Only(result.Trace, "wmi");
    REQUIRE(calls.size() > 3);
    CHECK(calls[0] == "wmi connect \\\\.\\root\\cimv2");
    CHECK(calls[1] == "wmi query SELECT SerialNumber FROM Win32_Bios");
    CHECK(Only(result.Trace, "wmi connect").size() == 1);
    CHECK(result.Live.at("wmi") == 0);
}

TEST_CASE("An enumeration sends each WMI query once, and the next enumeration sends it again")
{
    // BIOS, three of the memory modules, and the rows of each vendor
    const auto once = Only(Enumerate(Machine("workstation")).Trace, "wmi query");
    CHECK(once.size() == 7);
    CHECK(std::set(once.begin(), once.end()).size() == 7);
    CHECK(Only(Enumerate(Machine("workstation")).Trace, "wmi query") == once);
}

TEST_CASE("After a thrown status all WMI objects are released")
{
    Json machine = Machine("intel-laptop");
    machine["wmi"]["failures"] = Json::array({{{"contains", "SELECT Speed"}, {"status", "0x80041001"}}});
    const Enumerated result = Enumerate(machine);
    CHECK_FALSE(result.Thrown == nullptr);
    CHECK(result.Live.at("wmi") == 0);
    CHECK(Only(result.Trace, "wmi connect").size() == 1);
}
