// Snapshots with sources that fail or do not answer. The library's calls of Windows functions are redirected.

#include "../Print.h"

#include <atomic>
#include <chrono>

#include <windows.h>

#include <setupapi.h>

#include "snapshot/Slot.h"
#include "snapshot/Snapshot.h"
#include "snapshot/Threads.h"
#include "support/ReplacedImport.h"
#include "json/Json.h"

namespace orvel::shared::inventory {

namespace {

using tests::ReplacedImport;
using tests::TestModule;

Options At(Depth depth, uint32_t timeoutMilliseconds = 5000)
{
    return {depth, timeoutMilliseconds, false};
}

const Answer& EndOf(const Findings& findings, Source source)
{
    return findings.sources[static_cast<std::size_t>(source)].end;
}

HANDLE goOn = nullptr; // hanging functions wait for this event

/// Makes a source hang during its lifetime. The destructor lets the source continue, and waits until it has.
class Hanging {
public:
    Hanging() { goOn = ::CreateEventW(nullptr, TRUE, FALSE, nullptr); }
    Hanging(const Hanging&) = delete;
    Hanging& operator=(const Hanging&) = delete;
    ~Hanging()
    {
        ::SetEvent(goOn);
        ::Sleep(200);
        ::CloseHandle(goOn);
    }
};

HDEVINFO WINAPI HangingClassDevs(const GUID*, PCWSTR, HWND, DWORD)
{
    ::WaitForSingleObject(goOn, INFINITE);
    ::SetLastError(ERROR_ACCESS_DENIED);
    return INVALID_HANDLE_VALUE;
}

HDEVINFO WINAPI RefusedClassDevs(const GUID*, PCWSTR, HWND, DWORD)
{
    ::SetLastError(ERROR_ACCESS_DENIED);
    return INVALID_HANDLE_VALUE;
}

LSTATUS WINAPI HangingQueryValue(HKEY, LPCWSTR, LPDWORD, LPDWORD, LPBYTE, LPDWORD)
{
    ::WaitForSingleObject(goOn, INFINITE);
    return ERROR_ACCESS_DENIED;
}

LSTATUS WINAPI RefusedQueryValue(HKEY, LPCWSTR, LPDWORD, LPDWORD, LPBYTE, LPDWORD)
{
    return ERROR_ACCESS_DENIED;
}

LONG WINAPI RefusedBufferSizes(UINT32, UINT32*, UINT32*)
{
    return ERROR_ACCESS_DENIED;
}

LONG WINAPI HangingBufferSizes(UINT32, UINT32*, UINT32*)
{
    ::WaitForSingleObject(goOn, INFINITE);
    return ERROR_ACCESS_DENIED;
}

HMODULE WINAPI NoLibrary(LPCWSTR, HANDLE, DWORD)
{
    ::SetLastError(ERROR_MOD_NOT_FOUND);
    return nullptr;
}

HANDLE WINAPI NoThread(LPSECURITY_ATTRIBUTES, SIZE_T, LPTHREAD_START_ROUTINE, LPVOID, LPDWORD, DWORD)
{
    ::SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

template <typename Function>
ReplacedImport Replace(const wchar_t* dll, const char* name, Function* replacement)
{
    return {TestModule(), dll, name, reinterpret_cast<void*>(replacement)};
}

TEST_CASE("A source that does not answer is abandoned, and the others have their values")
{
    TakeSnapshot(At(Depth::Graphics, 60'000)); // the first snapshot takes long under Wine
    const Hanging hanging;
    const auto replaced = Replace(L"setupapi.dll", "SetupDiGetClassDevsW", &HangingClassDevs);
    const auto start = std::chrono::steady_clock::now();
    const auto findings = TakeSnapshot(At(Depth::Graphics, 2000));
    const auto taken = std::chrono::steady_clock::now() - start;
    CHECK(taken >= std::chrono::milliseconds(1900));
    CHECK(taken < std::chrono::milliseconds(6000));
    CHECK(EndOf(findings, Source::SetupApi) == NoAnswer());
    CHECK(EndOf(findings, Source::DriverKey) == NoAnswer());
    CHECK(EndOf(findings, Source::DisplayConfig).reason != Reason::NoAnswer);
    CHECK(EndOf(findings, Source::Dxgi).reason != Reason::NoAnswer);
}

TEST_CASE("If a driver key does not answer, SetupAPI's values stay")
{
    const auto healthy = TakeSnapshot(At(Depth::System));
    const Hanging hanging;
    const auto replaced = Replace(L"advapi32.dll", "RegQueryValueExW", &HangingQueryValue);
    const auto findings = TakeSnapshot(At(Depth::System, 1000));
    CHECK(EndOf(findings, Source::SetupApi) == Known(true));
    CHECK(EndOf(findings, Source::DriverKey) == NoAnswer());
    REQUIRE(findings.cards.size() == healthy.cards.size());
    for (const auto& card : findings.cards) {
        CHECK(IsKnown(card.Of(Property::InstanceId)));
    }
}

TEST_CASE("If the display configuration does not answer, the values of all other sources stay")
{
    const Hanging hanging;
    const auto replaced = Replace(L"user32.dll", "GetDisplayConfigBufferSizes", &HangingBufferSizes);
    const auto findings = TakeSnapshot(At(Depth::System, 1000));
    CHECK(EndOf(findings, Source::DisplayConfig) == NoAnswer());
    CHECK(EndOf(findings, Source::DriverKey) == Known(true));
    for (const auto& card : findings.cards) {
        CHECK(card.Of(Property::Displays) == Value{NoAnswer(), Source::DisplayConfig});
    }
}

TEST_CASE("A source that returns an error has failed with that code")
{
    SUBCASE("SetupAPI")
    {
        const auto replaced = Replace(L"setupapi.dll", "SetupDiGetClassDevsW", &RefusedClassDevs);
        const auto findings = TakeSnapshot(At(Depth::System));
        CHECK(EndOf(findings, Source::SetupApi) == Failed(ERROR_ACCESS_DENIED));
        CHECK(EndOf(findings, Source::DriverKey) == Unavailable(Reason::NoDevice));
        CHECK(findings.cards.empty());
    }
    SUBCASE("the display configuration")
    {
        const auto replaced = Replace(L"user32.dll", "GetDisplayConfigBufferSizes", &RefusedBufferSizes);
        CHECK(EndOf(TakeSnapshot(At(Depth::System)), Source::DisplayConfig) == Failed(ERROR_ACCESS_DENIED));
    }
    SUBCASE("the driver key")
    {
        const auto replaced = Replace(L"advapi32.dll", "RegQueryValueExW", &RefusedQueryValue);
        const auto findings = TakeSnapshot(At(Depth::System));
        CHECK(EndOf(findings, Source::DriverKey) == Known(true));
        for (const auto& card : findings.cards) {
            CHECK(card.Of(Property::InstanceId).status == Status::Known);
            CHECK(card.Of(Property::DriverVersion).status != Status::Known);
        }
    }
}

TEST_CASE("Without DXGI and DXCore, their values are unavailable")
{
    const auto replaced = Replace(L"kernel32.dll", "LoadLibraryExW", &NoLibrary);
    const auto findings = TakeSnapshot(At(Depth::Graphics));
    CHECK(EndOf(findings, Source::Dxgi) == Unavailable(Reason::NotPresent));
    CHECK(EndOf(findings, Source::DxCore) == Unavailable(Reason::NotPresent));
    CHECK(EndOf(findings, Source::SetupApi) == Known(true));
}

TEST_CASE("If no thread can be started, every source has failed with that reason")
{
    const auto replaced = Replace(L"kernel32.dll", "CreateThread", &NoThread);
    const auto findings = TakeSnapshot(At(Depth::Graphics));
    for (const auto source : {Source::SetupApi, Source::DriverKey, Source::DisplayConfig, Source::Dxgi, Source::DxCore}) {
        CHECK(EndOf(findings, source) == Failed(ERROR_NOT_ENOUGH_MEMORY));
    }
    CHECK(findings.cards.empty());
}

TEST_CASE("A slot returns its content once it is filled")
{
    Slot<int> slot;
    Answer end;
    CHECK_FALSE(slot.Take(0, end));
    CHECK(end == NoAnswer());
    slot.Put(7);
    slot.Close(5); // too late to have an effect
    CHECK(slot.Take(0, end) == 7);
    CHECK(end == Known(true));

    Slot<int> closed;
    closed.Close(5);
    CHECK_FALSE(closed.Take(0, end));
    CHECK(end == Failed(5));
}

TEST_CASE("An exception in a thread's work is dropped, and the process continues")
{
    const auto done = std::make_shared<Slot<int>>();
    Threads threads;
    CHECK(threads.Start([] { throw 1; }) == 0);
    CHECK(threads.Start([done] { done->Put(1); }) == 0);
    Answer end;
    CHECK(done->Take(5000, end) == 1);
}

TEST_CASE("Threads are awaited until their work is done, or the time is over")
{
    const auto mayEnd = std::make_shared<Slot<int>>();
    std::atomic<int> done = 0;
    Threads threads;
    threads.Await(5000); // there is none yet
    for (int count = 0; count < 3; ++count) {
        threads.Start([mayEnd, &done] {
            mayEnd->IsClosed(60'000);
            ++done;
        });
    }
    threads.Await(50);
    CHECK(done == 0);
    mayEnd->Put(1);
    threads.Await(60'000);
    CHECK(done == 3);
}

} // namespace

} // namespace orvel::shared::inventory
