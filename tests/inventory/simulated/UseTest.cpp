// The inventory's DLL in the ways that hosts use it.

#include <algorithm>
#include <cstdlib>
#include <thread>

#include <doctest/doctest.h>

#include <windows.h>

#include "OrvelInventory.h"
#include "Snapshots.h"
#include "support/Handles.h"
#include "support/HeldResources.h"

using namespace orvel::tests;

namespace {

/// The sources from Windows on two cards, or all of them with a driver of each vendor.
struct Use {
    std::string name;
    uint32_t depth;
    Json machine;
};

std::vector<Use> Uses()
{
    return {{"graphics", ORVEL_INVENTORY_DEPTH_GRAPHICS, TwinCards()},
            {"drivers", ORVEL_INVENTORY_DEPTH_DRIVERS, Machine("workstation")}};
}

void TakeAndFree(uint32_t depth)
{
    OrvelInventoryOptions options{};
    options.size = sizeof options;
    options.depth = depth;
    options.timeout_milliseconds = 20'000;
    OrvelInventory* inventory = nullptr;
    char* text = nullptr;
    OrvelInventoryTake(&options, &inventory);
    OrvelInventoryToJson(inventory, ORVEL_INVENTORY_JSON_FULL, &text, nullptr);
    OrvelInventoryFreeText(text);
    OrvelInventoryFree(inventory);
}

/// Takes snapshots, of which the simulation forgets the trace.
void TakeMany(const Use& use, int count)
{
    constexpr int between = 100;
    for (int taken = 0; taken < count; ++taken) {
        if (taken % between == 0) {
            Simulate(use.machine);
        }
        TakeAndFree(use.depth);
    }
    Simulate(use.machine);
}

DWORD WINAPI TakeOnce(void* cards)
{
    OrvelInventoryOptions options{};
    options.size = sizeof options;
    OrvelInventory* inventory = nullptr;
    OrvelInventoryTake(&options, &inventory);
    *static_cast<uint32_t*>(cards) = OrvelInventoryCardCount(inventory);
    char* text = nullptr;
    OrvelInventoryToJson(inventory, ORVEL_INVENTORY_JSON_FULL, &text, nullptr);
    OrvelInventoryFreeText(text);
    OrvelInventoryFree(inventory);
    return 0;
}

/// The card of a device; null where there is none.
const Json* CardOf(const Json& inventory, const std::string& instanceId)
{
    const auto& cards = inventory["cards"];
    const auto found = std::find_if(cards.begin(), cards.end(),
                                    [&](const Json& card) { return card["instance_id"]["value"] == instanceId; });
    return found == cards.end() ? nullptr : &*found;
}

} // namespace

TEST_CASE("On each machine of the gallery, every device is a card with the memory of its DXGI adapter")
{
    for (const auto& name : MachineNames()) {
        CAPTURE(name);
        const Json machine = Machine(name);
        if (!machine.contains("pnp")) { // recorded before --record asked what an inventory asks
            CHECK(name == "recorded-wine");
            continue;
        }
        const Json inventory = InventoryOf(machine, "graphics");
        CHECK(SourceIn(inventory, "setupapi")["state"] == "answered");
        CHECK(SourceIn(inventory, "dxgi")["state"] == "answered");
        for (const auto& device : machine["pnp"]["devices"]) {
            const Json* const card = CardOf(inventory, device["instance_id"]);
            REQUIRE(card);
            if (device.contains("DeviceDesc")) { // which Wine does not give
                CHECK((*card)["name"]["value"] == device["DeviceDesc"]);
            }
            CHECK((*card)["kind"]["status"] == "known");
            for (const auto& adapter : machine["dxgi"]["adapters"]) {
                if (adapter["Luid"] == device["Luid"]) {
                    CHECK((*card)["dedicated_memory_bytes"]["value"] == adapter["DedicatedVideoMemory"]);
                }
            }
        }
    }
}

TEST_CASE("Depth system calls neither DXGI nor a vendor's DLL, nor COM or WMI")
{
    InventoryOf(TwinCards(), "system");
    CHECK_FALSE(Trace().empty());
    for (const auto& call : Trace()) {
        CAPTURE(call);
        CHECK((call.starts_with("pnp ") || call.starts_with("registry ") || call.starts_with("displays ")));
    }
}

TEST_CASE("A snapshot gives everything back")
{
    for (const auto& use : Uses()) {
        InventoryOf(use.machine, use.name);
        for (const auto& [kind, count] : Live()) {
            CAPTURE(kind);
            CHECK(count == 0);
        }
    }
}

TEST_CASE("A snapshot is returned when the threads of its sources have ended")
{
    Json machine = TwinCards();
    machine["hang"] = {{{"call", "pnp SetupDiDestroyDeviceInfoList"}, {"milliseconds", 300}}}; // no value waits for it
    InventoryOf(machine, "drivers");
    CHECK(Live()["pnp"] == 0);
}

TEST_CASE("Eight threads take the same snapshot at once")
{
    for (const auto& use : Uses()) {
        CAPTURE(use.name);
        const Json expected = InventoryOf(use.machine, use.name);
        std::vector<std::string> wrong(8);
        std::vector<std::thread> threads;
        for (auto& text : wrong) {
            threads.emplace_back([&] {
                for (int count = 0; count < 20; ++count) {
                    if (const Json inventory = TakeInventory(use.name); inventory != expected) {
                        text = inventory.dump();
                    }
                }
            });
        }
        for (auto& thread : threads) {
            thread.join();
        }
        for (const auto& text : wrong) {
            CHECK(text == "");
        }
        CheckNoViolations();
    }
}

TEST_CASE("A thread with a stack of 64 KiB takes a snapshot")
{
    Simulate(TwinCards());
    uint32_t cards = 0;
    const Handle thread(::CreateThread(nullptr, 64 << 10, &TakeOnce, &cards, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr));
    REQUIRE(thread);
    CHECK(::WaitForSingleObject(thread.get(), 60'000) == WAIT_OBJECT_0);
    CHECK(cards == 3);
}

TEST_CASE("Snapshots leave nothing behind")
{
    const char* const wanted = std::getenv("ORVEL_INVENTORY_SNAPSHOTS"); // the test inventory-soak takes 10,000
    for (const auto& use : Uses()) {
        CAPTURE(use.name);
        const bool isWhole = use.depth == ORVEL_INVENTORY_DEPTH_DRIVERS;
        TakeMany(use, 500);
        const auto before = HeldNow();
        const auto objectsBefore = ::GetGuiResources(::GetCurrentProcess(), GR_GDIOBJECTS);
        constexpr int limit = 4096; // bytes
        const int count = wanted && isWhole ? std::atoi(wanted) : 500;
        CHECK(HeapGrowth(limit, [&] { TakeMany(use, count); }) <= limit);
        const auto after = HeldNow();
        CHECK(after.Handles <= before.Handles + 2);
        CHECK(after.Modules == before.Modules);
        CHECK(after.TlsIndexes == before.TlsIndexes);
        CHECK(::GetGuiResources(::GetCurrentProcess(), GR_GDIOBJECTS) == objectsBefore);
        MESSAGE("heap bytes " << before.HeapBytes << " -> " << after.HeapBytes << ", private bytes " << before.PrivateBytes
                              << " -> " << after.PrivateBytes);
        CHECK(after.PrivateBytes < before.PrivateBytes + (4 << 20));
    }
}
