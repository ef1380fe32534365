// The vendors' drivers, as the inventory's DLL asks them on simulated machines.

#include <algorithm>

#include <doctest/doctest.h>

#include "Snapshots.h"

using namespace orvel::tests;

namespace {

/// Two equal GeForce cards and a Radeon, with a driver of each vendor.
Json RichMachine()
{
    Json machine = TrapMachine("drivers-two-geforces");
    const Json radeons = TrapMachine("drivers-two-radeons-by-place");
    machine["pnp"]["devices"].push_back(radeons["pnp"]["devices"][0]);
    machine["adl"] = radeons["adl"];
    machine["adlx"] = radeons["adlx"];
    machine["adlx"]["gpus"].erase(0);
    machine["pnp"]["devices"][2]["BusNumber"] = 3;
    machine["adlx"]["gpus"][0]["BdfFromADLXGPU"] = {3, 0, 0};
    return machine;
}

/// The source that a call of the trace belongs to; "" for one that is not a driver's.
std::string SourceOf(const std::string& call)
{
    if (call.starts_with("adl ") || call.starts_with("adlx ")) {
        return "adlx";
    }
    return call.starts_with("nvml ") ? "nvml" : call.starts_with("nvapi ") ? "nvapi" : "";
}

/// A value may change where it came from the source; then the source or another one says what it says.
void CheckChanges(const Json& cards, const Json& before, const std::string& source)
{
    REQUIRE(cards.size() == before.size());
    for (size_t index = 0; index < cards.size(); ++index) {
        for (const auto& [property, value] : cards[index].items()) {
            const Json& healthy = before[index][property];
            CAPTURE(index);
            CAPTURE(property);
            CAPTURE(value.dump());
            if (value == healthy) {
                continue;
            }
            CHECK(healthy["source"] == source);
            // Another source has it, or precedes this one and lacks it.
            const bool isOthers =
                value["source"] != source && (value["status"] == "known" || value["reason"] == "no such value");
            CHECK((isOthers || value["source"] == source));
        }
    }
}

void CheckNothingIsLeft()
{
    for (const auto& [name, count] : Live()) {
        CAPTURE(name);
        CHECK(count == 0);
    }
    CheckNoViolations();
}

/// The places of the answers in a driver's section of a machine.
std::vector<Json::json_pointer> AnswersIn(const Json& machine, const char* section, const char* list)
{
    std::vector<Json::json_pointer> places;
    const Json::json_pointer root(std::string("/") + section + "/" + list);
    for (size_t index = 0; index < machine[root].size(); ++index) {
        for (const auto& [name, answer] : machine[root / index].items()) {
            places.push_back(root / index / name);
        }
    }
    return places;
}

TEST_CASE("Two equal cards are the same in every order of all sources, the drivers' included")
{
    const Json machine = TrapMachine("drivers-two-geforces");
    const Json expected = InventoryOf(machine, "drivers")["cards"];
    REQUIRE(expected.size() == 2);
    CheckEveryOrder(machine, "drivers", {"/pnp/devices", "/dxgi/adapters", "/nvml/devices", "/nvapi/gpus"}, expected);
}

TEST_CASE("A driver is loaded, asked and released without breaking its rules")
{
    const Json inventory = InventoryOf(RichMachine(), "drivers");
    for (const char* source : {"nvml", "nvapi", "adlx"}) {
        CHECK(SourceIn(inventory, source)["state"] == "answered");
    }
    CHECK(Only(Trace(), "load amdadlx64.dll").size() == 1);
    CHECK(Only(Trace(), "nvml nvmlShutdown").size() == 1);
    CHECK(Only(Trace(), "nvapi NvAPI_Unload").size() == 1);
    CHECK(Only(Trace(), "adlx ADLXTerminate").size() == 1);
    CheckNothingIsLeft();
}

TEST_CASE("At depth graphics, and while a card sleeps, no driver is loaded")
{
    Json machine = RichMachine();
    InventoryOf(machine, "graphics");
    for (const char* call : {"load nv", "load a", "nvml ", "nvapi ", "adl"}) {
        CHECK(Only(Trace(), call).empty());
    }
    machine["pnp"]["devices"][0]["PowerData"] = "D3";
    InventoryOf(machine, "drivers");
    for (const char* call : {"load nv", "nvml ", "nvapi "}) {
        CHECK(Only(Trace(), call).empty());
    }
    CHECK_FALSE(Only(Trace(), "adlx ").empty()); // AMD's card is awake
}

TEST_CASE("Each answer of a driver that fails, or is rubbish, changes the values of its source alone")
{
    const Json machine = RichMachine();
    const Json healthy = InventoryOf(machine, "drivers")["cards"];
    struct Section {
        const char *name, *list;
    };
    for (const auto& section : {Section{"nvml", "devices"}, Section{"nvapi", "gpus"}, Section{"adlx", "gpus"}}) {
        for (const auto& place : AnswersIn(machine, section.name, section.list)) {
            CAPTURE(place.to_string());
            for (const Json& fault :
                 {Json{{"status", 3}}, Json{{"status", 15}}, Json{{"status", 0}, {"writes", "rubbish"}}}) {
                CAPTURE(fault.dump());
                Json broken = machine;
                broken[place] = fault;
                CheckChanges(InventoryOf(broken, "drivers")["cards"], healthy, section.name);
                CheckNothingIsLeft();
            }
        }
    }
}

TEST_CASE("Each call of a driver that hangs takes the values of its source alone")
{
    const Json machine = RichMachine();
    const Json healthy = InventoryOf(machine, "drivers")["cards"];
    auto calls = Trace();
    std::sort(calls.begin(), calls.end());
    calls.erase(std::unique(calls.begin(), calls.end()), calls.end());
    int hanging = 0;
    for (const auto& call : calls) {
        const std::string source = SourceOf(call);
        if (source.empty()) {
            continue;
        }
        CAPTURE(call);
        Json broken = machine;
        broken["hang"] = {{{"call", call}, {"milliseconds", 60'000}}};
        const Json inventory = InventoryOf(broken, "drivers", 800);
        CHECK(SourceIn(inventory, source)["code"] == 1460);
        CheckChanges(inventory["cards"], healthy, source);
        ++hanging;
    }
    CHECK(hanging > 40);
}

} // namespace
