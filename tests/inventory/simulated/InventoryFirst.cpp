// A program that is linked against the inventory's DLL, and loads the simulation later.

#include <doctest/doctest.h>

#include <windows.h>

#include <objbase.h>

#include "LoadedSimulation.h"
#include "Snapshots.h"
#include "platform/Handles.h"

using namespace orvel::tests;

namespace {

void EndSimulation()
{
    const auto simulation = ::GetModuleHandleW(L"orvel-simulation.dll");
    orvel::shared::enumeration::FindFunction<void (*)()>(simulation, "OrvelEndSimulation")();
}

} // namespace

TEST_CASE("An inventory that was there before the simulation sees the machine, until the simulation ends")
{
    const auto computers = TakeInventory("system");
    ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    REQUIRE(orvel::tools::LoadSimulation() == ERROR_SUCCESS);
    CHECK(InventoryOf(TwinCards(), "graphics")["cards"].size() == 3);
    CHECK(TakeInventory("system")["cards"].size() == 2);
    EndSimulation();
    CHECK(TakeInventory("system") == computers);
}

TEST_CASE("After a call that hung, the computer is there again, and nothing that the simulation gave reaches it")
{
    ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    REQUIRE(orvel::tools::LoadSimulation() == ERROR_SUCCESS);
    Json machine = TwinCards();
    machine["hang"] = {{{"call", "pnp SetupDiGetDevicePropertyW"}, {"milliseconds", 600'000}}};
    CHECK(SourceIn(InventoryOf(machine, "system", 300), "setupapi")["code"] == 1460);
    EndSimulation();
    ::Sleep(300); // the abandoned thread goes on
    CHECK(SourceIn(TakeInventory("system"), "setupapi")["state"] == "answered");
}
