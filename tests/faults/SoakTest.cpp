// A host that enumerates repeatedly must not accumulate resources. ORVEL_SOAK_ROUNDS is the number of enumerations.

#include <cstdlib>

#include <windows.h>

#include <objbase.h>

#include <doctest/doctest.h>

#include "Faults.h"
#include "GraphicCardEnumeration.h"
#include "support/Handles.h"
#include "support/HeldResources.h"

using namespace orvel::tests;

namespace {

constexpr int roundsPerMachine = 100; // each new machine clears the simulation's trace
constexpr int roundsBefore = 300;     // until the heaps include the released objects that the simulation keeps

void EnumerateOnce()
{
    orvel::shared::enumeration::GraphicCardEnumeration enumeration;
    try {
        enumeration.QueryGraphicCards();
    } catch (long) { // the WMI status that one of the machines causes
    }
}

void EnumerateOnNewThread()
{
    const Handle thread(::CreateThread(
        nullptr, 0,
        [](void*) -> DWORD {
            ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
            EnumerateOnce();
            ::CoUninitialize();
            return 0;
        },
        nullptr, 0, nullptr));
    ::WaitForSingleObject(thread.get(), INFINITE);
}

void EnumerateRounds(const Json& machine, int rounds, void (*enumerate)())
{
    for (int round = 0; round < rounds; ++round) {
        if (round % roundsPerMachine == 0) {
            Simulate(machine);
        }
        enumerate();
    }
    Simulate(machine);
}

int Rounds()
{
    const char* text = std::getenv("ORVEL_SOAK_ROUNDS");
    return text ? std::atoi(text) : 500;
}

void CheckNothingAddsUp(const Json& machine, int rounds, void (*enumerate)() = EnumerateOnce)
{
    EnumerateRounds(machine, roundsBefore, enumerate);
    const HeldResources first = HeldNow();
    const int limit = 8 * rounds; // a leak of one byte per round would need a block of 16 bytes each
    CHECK(HeapGrowth(limit, [&] { EnumerateRounds(machine, rounds, enumerate); }) <= limit);
    const HeldResources last = HeldNow();
    MESSAGE(rounds << " rounds: handles " << first.Handles << " to " << last.Handles << ", modules " << first.Modules
                   << " to " << last.Modules << ", heap KiB " << first.HeapBytes / 1024 << " to " << last.HeapBytes / 1024
                   << ", private KiB " << first.PrivateBytes / 1024 << " to " << last.PrivateBytes / 1024);
    CHECK(last.Handles <= first.Handles + 2); // the system occasionally opens one for itself
    CHECK(last.Modules == first.Modules);
    CHECK(last.TlsIndexes == first.TlsIndexes);
    // The heaps commit memory in large pieces, depending on the order in which the simulation releases objects.
    CHECK(last.PrivateBytes <= first.PrivateBytes + 8 * 1024 * 1024);
}

} // namespace

TEST_SUITE_BEGIN("soak");

TEST_CASE("The resources of the process are counted")
{
    const HeldResources before = HeldNow();
    const std::string text(100000, 'x');
    const Handle event(::CreateEventW(nullptr, FALSE, FALSE, nullptr));
    const DWORD tlsIndex = ::TlsAlloc();
    const HeldResources after = HeldNow();
    CHECK(after.HeapBytes >= before.HeapBytes + text.size());
    CHECK(after.Handles == before.Handles + 1);
    CHECK(after.TlsIndexes == before.TlsIndexes + 1);
    ::TlsFree(tlsIndex);
}

TEST_CASE("Repeated enumerations do not leak handles, modules or memory")
{
    CheckNothingAddsUp(HealthyWorkstation(), Rounds());
}

TEST_CASE("Repeated enumerations on separate threads do not leak")
{
    CheckNothingAddsUp(HealthyWorkstation(), Rounds() / 5, EnumerateOnNewThread);
}

TEST_CASE("Repeated enumerations that throw a status do not leak")
{
    Json machine = HealthyWorkstation();
    machine["wmi"]["classes"].erase("Win32_PhysicalMemory");
    CheckNothingAddsUp(machine, Rounds() / 5);
}

TEST_CASE("Repeated enumerations that leave ADLX open do not leak")
{
    Json machine = HealthyWorkstation();
    machine["wmi"]["failures"].push_back({{"contains", "VEN_1002"}, {"status", -1}});
    CheckNothingAddsUp(machine, Rounds() / 5);
    EnumerateRounds(HealthyWorkstation(), 1, EnumerateOnce); // terminates ADLX
}

TEST_CASE("Repeated enumerations without OpenCL's functions do not leak")
{
    Json machine = HealthyWorkstation();
    machine["opencl"]["missing"] = {"clGetDeviceInfo"};
    CheckNothingAddsUp(machine, Rounds() / 5);
}

TEST_SUITE_END();
