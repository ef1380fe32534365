// The enumeration on machines whose DLLs Windows finds by its own search, like the DLLs of real drivers.

#include <doctest/doctest.h>

#include <windows.h>

#include "support/Enumerated.h"

using namespace orvel::tests;

TEST_CASE("Drivers found by the Windows search order give the same records, and are unloaded with the enumeration")
{
    Json machine = Machine("workstation");
    const Enumerated preloaded = Enumerate(machine);
    machine["searched"] = true;
    const Enumerated searched = Enumerate(machine);
    CHECK(searched.Cards.size() == 3);
    CHECK(searched.Cards == preloaded.Cards);
    CHECK(searched.Log == preloaded.Log);
    CHECK(searched.Trace == preloaded.Trace);
    for (const wchar_t* name : {L"opencl.dll", L"nvapi64.dll", L"atiadlxx.dll", L"amdadlx64.dll"}) {
        CHECK_FALSE(::GetModuleHandleW(name));
    }
}

TEST_CASE("If a failed call unloads opencl.dll, only the current OpenCL lookup fails")
{
    Json machine = HealthyLaptop();
    machine["opencl"]["pinned"] = false;
    machine["opencl"]["platforms"][0]["devices"][0]["CL_DEVICE_NAME"] = {{"status", -5}};
    const Enumerated result = Enumerate(machine);
    CHECK(result.Cards.empty()); // Intel's texts are empty, and the first number cannot be read
    CHECK(result.Thrown == nullptr);
    CHECK_FALSE(::GetModuleHandleW(L"opencl.dll"));
}
