// Hosts that unload the library, perhaps repeatedly, as a plug-in or a setup program does.

#include <thread>

#include <windows.h>

#include <objbase.h>

#include <doctest/doctest.h>

#include "support/Handles.h"
#include "support/HeldResources.h"
#include "support/SimulatedRun.h"

using namespace orvel::tests;
using orvel::shared::enumeration::FindFunction;
using orvel::shared::enumeration::ModuleHandle;

namespace {

constexpr wchar_t library[] = L"orvel-graphic-cards-enumeration.dll";
constexpr wchar_t client[] = L"orvel-shared-wmi-client.dll";

/// Loads the library, enumerates and unloads the library. Returns the number of cards.
size_t LoadAndEnumerate()
{
    using Change = void (*)(void*);
    using Count = size_t (*)(const void*);
    const ModuleHandle loaded(::LoadLibraryW(library));
    const HMODULE in = loaded.get();
    const auto construct = FindFunction<Change>(in, "_ZN5orvel6shared11enumeration22GraphicCardEnumerationC1Ev");
    const auto query =
        FindFunction<Change>(in, "_ZN5orvel6shared11enumeration22GraphicCardEnumeration17QueryGraphicCardsEv");
    const auto destroy = FindFunction<Change>(in, "_ZN5orvel6shared11enumeration22GraphicCardEnumerationD1Ev");
    const auto size = FindFunction<Count>(in, "_ZNK5orvel6shared11enumeration22GraphicCardEnumeration4sizeEv");
    if (!construct || !query || !destroy || !size) {
        return 0;
    }
    void* enumeration[4];
    construct(enumeration);
    query(enumeration);
    const size_t cards = size(enumeration);
    destroy(enumeration);
    return cards;
}

bool IsLoaded(const wchar_t* dll)
{
    return ::GetModuleHandleW(dll) != nullptr;
}

} // namespace

TEST_CASE("FreeLibrary unloads the library on the thread that enumerated")
{
    Simulate(Machine("workstation"));
    CHECK(LoadAndEnumerate() == 3);
    CHECK_FALSE(IsLoaded(library));
    CHECK_FALSE(IsLoaded(client));
}

TEST_CASE("FreeLibrary unloads the library while another thread that enumerated still runs")
{
    Simulate(Machine("intel-laptop"));
    ModuleHandle loaded(::LoadLibraryW(library));
    size_t cards = 0;
    const Handle hasEnumerated(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const Handle mayEnd(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    std::thread thread([&] {
        ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        cards = LoadAndEnumerate();
        ::SetEvent(hasEnumerated.get());
        ::WaitForSingleObject(mayEnd.get(), INFINITE);
        ::CoUninitialize();
    });
    ::WaitForSingleObject(hasEnumerated.get(), INFINITE);
    loaded.reset();
    CHECK(cards == 1);
    CHECK_FALSE(IsLoaded(library));
    CHECK_FALSE(IsLoaded(client));
    ::SetEvent(mayEnd.get());
    thread.join(); // the end of the thread must not call the unloaded library
    CHECK(LoadAndEnumerate() == 1);
}

TEST_CASE("The library stays loaded while ADLX can call it, and is unloaded after the next run")
{
    Json machine = Machine("workstation");
    Json failing = machine;
    failing["wmi"]["failures"] = {{{"contains", "VEN_1002"}, {"status", "0x80041001"}}};
    Simulate(failing);
    CHECK(LoadAndEnumerate() == 2);
    CHECK(Live()["adlx"] != 0);
    CHECK(IsLoaded(library));
    Simulate(machine);
    CHECK(LoadAndEnumerate() == 3);
    CHECK_FALSE(IsLoaded(library));
    CHECK_FALSE(IsLoaded(client));
}

TEST_CASE("Loading the library repeatedly does not use up resources of the process")
{
    // The same number of rounds runs before the count, until the memory that the simulation keeps for its machine and for
    // released objects no longer grows.
    constexpr size_t rounds = 150;
    Simulate(Machine("intel-laptop"));
    for (size_t round = 0; round < rounds; ++round) {
        LoadAndEnumerate();
    }
    Simulate(Machine("intel-laptop"));
    const HeldResources first = HeldNow();
    for (size_t round = 0; round < rounds; ++round) {
        LoadAndEnumerate();
    }
    Simulate(Machine("intel-laptop"));
    const HeldResources last = HeldNow();
    MESSAGE("bytes a load: " << (last.HeapBytes - first.HeapBytes) / rounds);
    CHECK(last.TlsIndexes == first.TlsIndexes);
    CHECK(last.Modules == first.Modules);
    // The runtime does not release its data for threads and locks: four handles for each of the two DLLs, and for both
    // together 3 KiB on Wine 8 and 5 KiB on Wine 10. Wine 10's heap allocates blocks of equal size in groups, hence 12 KiB.
    CHECK(last.Handles <= first.Handles + 2 + rounds * 8);
    CHECK(last.HeapBytes <= first.HeapBytes + rounds * 16 * 1024);
}
