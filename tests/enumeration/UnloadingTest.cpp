// A host that loads the library for a while, and perhaps again and again, as a plug-in or a setup program does.

#include <memory>
#include <thread>

#include <windows.h>

#include <objbase.h>

#include <doctest/doctest.h>

#include "support/HeldResources.h"
#include "support/SimulatedRun.h"

using namespace orvel::tests;

namespace {

constexpr wchar_t library[] = L"orvel-graphic-cards-enumeration.dll";
constexpr wchar_t client[] = L"orvel-shared-wmi-client.dll";

struct FreeLoaded {
    void operator()(HMODULE module) const { ::FreeLibrary(module); }
};

using LoadedLibrary = std::unique_ptr<std::remove_pointer_t<HMODULE>, FreeLoaded>;

template <typename Function>
Function Find(const LoadedLibrary& from, const std::string& member)
{
    const std::string name = "_ZN5orvel6shared11enumeration22GraphicCardEnumeration" + member;
    return reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(from.get(), name.c_str())));
}

/// Enumerates with a library that is loaded for it; the number of cards.
size_t LoadAndEnumerate()
{
    const LoadedLibrary loaded(::LoadLibraryW(library));
    const auto construct = Find<void (*)(void*)>(loaded, "C1Ev");
    const auto query = Find<void (*)(void*)>(loaded, "17QueryGraphicCardsEv");
    const auto destroy = Find<void (*)(void*)>(loaded, "D1Ev");
    const auto size = reinterpret_cast<size_t (*)(const void*)>(reinterpret_cast<void*>(
        ::GetProcAddress(loaded.get(), "_ZNK5orvel6shared11enumeration22GraphicCardEnumeration4sizeEv")));
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

TEST_CASE("The library goes when the host frees it, on the thread that has enumerated")
{
    Simulate(Machine("workstation"));
    CHECK(LoadAndEnumerate() == 3);
    CHECK_FALSE(IsLoaded(library));
    CHECK_FALSE(IsLoaded(client));
}

TEST_CASE("It goes where another thread has enumerated, which lives on")
{
    Simulate(Machine("intel-laptop"));
    LoadedLibrary loaded(::LoadLibraryW(library));
    size_t cards = 0;
    const std::unique_ptr<void, decltype(&::CloseHandle)> hasEnumerated(::CreateEventW(nullptr, TRUE, FALSE, nullptr),
                                                                        ::CloseHandle);
    const std::unique_ptr<void, decltype(&::CloseHandle)> mayEnd(::CreateEventW(nullptr, TRUE, FALSE, nullptr),
                                                                 ::CloseHandle);
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
    thread.join(); // its end runs nothing of a library that is gone
    CHECK(LoadAndEnumerate() == 1);
}

TEST_CASE("Loading it again and again takes nothing of the process that runs out")
{
    constexpr size_t rounds = 50;
    Simulate(Machine("intel-laptop"));
    LoadAndEnumerate();
    Simulate(Machine("intel-laptop"));
    const HeldResources first = HeldNow();
    for (size_t round = 0; round < rounds; ++round) {
        LoadAndEnumerate();
    }
    Simulate(Machine("intel-laptop"));
    const HeldResources last = HeldNow();
    CHECK(last.TlsIndexes == first.TlsIndexes);
    CHECK(last.Modules == first.Modules);
    // What the runtime knows of its threads and locks stays: four handles and less than 2 KiB for each of the two DLLs.
    CHECK(last.Handles <= first.Handles + 2 + rounds * 8);
    CHECK(last.HeapBytes <= first.HeapBytes + rounds * 4096);
}
