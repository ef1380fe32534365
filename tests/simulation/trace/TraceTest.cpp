// What the simulation records.

#include <doctest/doctest.h>

#include "drivers/HandleTable.h"
#include "trace/Graveyard.h"
#include "trace/Trace.h"
#include "trace/Violations.h"

using namespace orvel::simulation;

using Json = nlohmann::json;

TEST_CASE("The trace contains every call in order, and counts calls by prefix")
{
    ClearTrace();
    for (const char* call : {"nvml nvmlInit_v2", "adl A 0", "nvml nvmlInit_v2", "nvmlish"}) {
        AddToTrace(call);
    }
    CHECK(TraceAsJson() == Json::array({"nvml nvmlInit_v2", "adl A 0", "nvml nvmlInit_v2", "nvmlish"}));
    CHECK(CountCalls("nvml ") == 2);
    CHECK(CountCalls("") == 4);
    CHECK(CountCalls("dxgi") == 0);
    ClearTrace();
    CHECK(TraceAsJson() == Json::array());
}

TEST_CASE("An object of the previous machine is not counted on the next one, even if it is released there")
{
    ClearTrace();
    {
        const LiveObject former(Counted::Adl);
        CHECK(LiveAsJson()["adl"] == 1);
        ClearTrace();
        const LiveObject next(Counted::Adl);
        CHECK(LiveAsJson()["adl"] == 1);
    }
    CHECK(LiveAsJson()["adl"] == 0);
}

TEST_CASE("A violation names the call and the rule")
{
    ClearViolations();
    CHECK(Refuse("nvapi F", "a null pointer", -5) == -5);
    CHECK(ViolationsAsJson() == Json{{"count", 1}, {"texts", {"nvapi F: a null pointer"}}});
    ClearViolations();
    CHECK(ViolationsAsJson()["count"] == 0);
}

TEST_CASE("A call on a dead object is a violation with the object's name")
{
    ClearViolations();
    void* const dead = DeadObject("dxgi", -7);
    CHECK(DeadObject("dxgi", -7) == dead);
    const auto function = reinterpret_cast<int32_t (*)(void*)>((*static_cast<void***>(dead))[26]);
    CHECK(function(dead) == -7);
    CHECK(ViolationsAsJson()["texts"] == Json::array({"dxgi: a call on an object that is not alive"}));
    ClearViolations();
}

TEST_CASE("An object's handle is constant until the session ends, and never reused")
{
    HandleTable<int> table;
    const int first = 1;
    const int second = 2;
    void* const handle = table.HandleOf(first);
    CHECK(table.HandleOf(first) == handle);
    CHECK(table.HandleOf(second) != handle);
    CHECK(table.Find(handle) == &first);
    CHECK_FALSE(table.Find(nullptr));
    table.Clear();
    CHECK_FALSE(table.Find(handle));
    CHECK(table.HandleOf(first) != handle);
}
