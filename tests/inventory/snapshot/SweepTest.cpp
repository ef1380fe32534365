// Every call that a snapshot makes fails once and hangs once. Then exactly the values of that source change, and they report
// the failure.

#include "../Print.h"

#include <algorithm>
#include <utility>

#include <windows.h>

#include "../Readings.h"
#include "FakePlatform.h"
#include "snapshot/Snapshot.h"

namespace orvel::shared::inventory {

namespace {

using P = Property;

constexpr Source askedSources[] = {Source::SetupApi, Source::DriverKey, Source::DisplayConfig,
                                   Source::Dxgi,     Source::Nvml,      Source::Nvapi};

struct Run {
    Findings findings;
    std::array<int, sourceCount> calls{};
    bool isMatchRefused = false;

    const Answer& End(Source source) const { return findings.sources[static_cast<std::size_t>(source)].end; }
};

Run RunWith(const Fault& fault)
{
    const FakePlatform platform(fault);
    const uint32_t limit = fault.kind == Fault::Hangs ? 400 : 10'000;
    Run run{TakeSnapshot({Depth::Drivers, limit, false}), {}, false};
    for (const auto source : askedSources) {
        run.calls[static_cast<std::size_t>(source)] = platform.Calls(source);
    }
    run.isMatchRefused = platform.IsMatchRefused();
    return run;
}

int CallsOf(const Run& run, Source source)
{
    return run.calls[static_cast<std::size_t>(source)];
}

/// Whether the card is on this bus: by the end of its instance id, or by whatever else distinguishes the two cards.
bool IsOnBus(const Card& card, uint64_t bus)
{
    const auto id = TextOf(card.Of(P::InstanceId));
    if (!id.empty()) {
        return id.ends_with(std::to_string(bus));
    }
    return NumberOf(card.Of(P::PciBus)) == bus || NumberOf(card.Of(P::Luid)) == 6 + bus;
}

const Card& CardOnBus(const Run& run, uint64_t bus)
{
    for (const auto& card : run.findings.cards) {
        if (IsOnBus(card, bus)) {
            return card;
        }
    }
    throw std::runtime_error("no card on bus " + std::to_string(bus));
}

/// Whether another source has replaced the value.
bool HasOtherSource(const Value& value, const Value& before, Source source)
{
    return IsKnown(value) && before.source == source && value.source != source;
}

/// Whether a changed value reports that its source failed.
bool SaysRefused(const Value& value, Source source)
{
    return value.status == Status::Failed && value.source == source && value.code == RefusalOf(source);
}

/// Without its LUID or address, one of two equal cards cannot be distinguished from the other. Some values are equal, or
/// come from another source.
bool IsUnmatched(const Value& value, const Value& before, const Run& run)
{
    const bool isSame = value.data == before.data && IsKnown(value);
    return run.isMatchRefused && (isSame || value.reason == Reason::CannotTell || value.reason == Reason::NoLuid);
}

/// A display whose name cannot be read is listed without a name.
bool LacksDisplayName(const Value& value, Property property)
{
    const auto* displays = std::get_if<Displays>(&value.data);
    return property == P::Displays && displays && displays->size() == 1 && !displays->front().gdiName;
}

int CheckChanges(const Run& run, const Run& healthy, Source source)
{
    int changes = 0;
    for (const uint64_t bus : {1U, 2U}) {
        for (std::size_t index = 0; index < propertyCount; ++index) {
            const auto& value = CardOnBus(run, bus).values[index];
            const auto& before = CardOnBus(healthy, bus).values[index];
            CAPTURE(bus);
            CAPTURE(std::string(RowOf(static_cast<Property>(index)).name));
            if (value == before) {
                continue;
            }
            ++changes;
            const bool isExpected =
                SaysRefused(value, source) || HasOtherSource(value, before, source) || IsUnmatched(value, before, run) ||
                (source == Source::DisplayConfig && LacksDisplayName(value, static_cast<Property>(index)));
            CHECK_MESSAGE(isExpected, toString(value));
        }
    }
    return changes;
}

TEST_CASE("The two equal cards of the healthy platform each have their own values")
{
    const auto healthy = RunWith({});
    REQUIRE(healthy.findings.cards.size() == 2);
    for (const auto source : askedSources) {
        CHECK(healthy.End(source) == Known(true));
        CHECK(CallsOf(healthy, source) > 2);
    }
    CHECK(healthy.End(Source::DxCore) == Unavailable(Reason::NotPresent));
    CHECK(healthy.End(Source::Adlx) == Unavailable(Reason::NotPresent));
    const auto& first = CardOnBus(healthy, 1);
    CHECK(first.Of(P::DedicatedMemoryBytes) == Value{Known(12 * gibibyte), Source::Dxgi});
    CHECK(first.Of(P::BiosVersion).data == Data("first"));
    CHECK(std::get<Displays>(first.Of(P::Displays).data).at(0).width == 1920);
    CHECK(first.Of(P::Uuid) == Value{Known("GPU-1"), Source::Nvml});
    CHECK(first.Of(P::BoardMemoryBytes) == Value{Known(12 * gibibyte), Source::Nvml});
    CHECK(first.Of(P::Integrated) == Value{Known(false), Source::Nvapi});
    const auto& second = CardOnBus(healthy, 2);
    CHECK(second.Of(P::Uuid) == Value{Known("GPU-2"), Source::Nvml});
    CHECK(second.Of(P::Integrated) == Value{Known(true), Source::Nvapi});
    CHECK(second.Of(P::DedicatedMemoryBytes) == Value{Known(24 * gibibyte), Source::Dxgi});
    CHECK(std::get<Displays>(second.Of(P::Displays).data).at(0).width == 3840);
    CHECK(std::get<Displays>(second.Of(P::Displays).data).at(0).refreshMillihertz == 60'000);
}

TEST_CASE("Each failed call changes only the values of its source, and they report the failure")
{
    const auto healthy = RunWith({});
    for (const auto source : askedSources) {
        int runsWithChanges = 0;
        for (int number = 0; number < CallsOf(healthy, source); ++number) {
            CAPTURE(std::string(SourceText(source)));
            CAPTURE(number);
            const auto run = RunWith({Fault::Refuses, source, number});
            if (run.End(Source::SetupApi) != Known(true)) { // the list itself: see below
                CHECK(run.End(Source::SetupApi) == Failed(RefusalOf(source)));
                CHECK(run.findings.cards.size() == 2);
                ++runsWithChanges;
                continue;
            }
            REQUIRE(run.findings.cards.size() == 2);
            runsWithChanges += CheckChanges(run, healthy, source) > 0 ? 1 : 0;
        }
        CHECK(runsWithChanges > 2);
    }
}

TEST_CASE("Each call that hangs loses all values of its source, and of no other source")
{
    const auto healthy = RunWith({});
    for (const auto source : {Source::DriverKey, Source::DisplayConfig, Source::Dxgi, Source::Nvml, Source::Nvapi}) {
        for (int number = 0; number < CallsOf(healthy, source); ++number) {
            CAPTURE(std::string(SourceText(source)));
            CAPTURE(number);
            const auto run = RunWith({Fault::Hangs, source, number});
            CHECK(run.End(source) == NoAnswer());
            REQUIRE(run.findings.cards.size() == 2);
            for (const uint64_t bus : {1U, 2U}) {
                for (std::size_t index = 0; index < propertyCount; ++index) {
                    const auto& value = CardOnBus(run, bus).values[index];
                    const auto& before = CardOnBus(healthy, bus).values[index];
                    CAPTURE(bus);
                    CAPTURE(std::string(RowOf(static_cast<Property>(index)).name));
                    if (before.source != source) {
                        CHECK(value == before);
                    } else if (!HasOtherSource(value, before, source)) {
                        CHECK(value == Value{NoAnswer(), source});
                    }
                }
            }
        }
    }
}

bool IsLoaded(const FakePlatform& platform, const wchar_t* name)
{
    const auto loaded = platform.LoadedLibraries();
    return std::find(loaded.begin(), loaded.end(), name) != loaded.end();
}

TEST_CASE("While a card sleeps, its vendor's libraries are not even loaded")
{
    FakePlatform platform({});
    platform.LetSleep(1);
    const auto findings = TakeSnapshot({Depth::Drivers, 10'000, false});
    CHECK_FALSE(IsLoaded(platform, L"nvml.dll"));
    CHECK_FALSE(IsLoaded(platform, L"nvapi64.dll"));
    CHECK(IsLoaded(platform, L"amdadlx64.dll")); // no card of AMD's sleeps
    REQUIRE(findings.cards.size() == 2);
    for (const auto& card : findings.cards) { // also the one that is awake
        CHECK(card.Of(P::Uuid) == Value{NotAsked(Reason::Asleep), Source::Nvml});
        CHECK(card.Of(P::Integrated) == Value{NotAsked(Reason::Asleep), Source::Nvapi});
        CHECK(card.Of(P::DriverVersionMarketing) == Value{Known("596.72"), Source::SetupApi});
    }

    const auto woken = TakeSnapshot({Depth::Drivers, 10'000, true});
    CHECK(IsLoaded(platform, L"nvml.dll"));
    CHECK(TextOf(woken.cards.at(0).Of(P::Uuid)) == "GPU-1");
}

TEST_CASE("If SetupAPI does not list the cards, no library that might wake one is loaded")
{
    for (const auto kind : {Fault::Refuses, Fault::Hangs}) {
        const FakePlatform platform({kind, Source::SetupApi, 0});
        const auto findings = TakeSnapshot({Depth::Drivers, 1000, false});
        for (const auto source : {Source::Nvml, Source::Nvapi, Source::Adlx}) {
            CHECK(findings.sources[static_cast<std::size_t>(source)].end == NotAsked(Reason::PowerUnknown));
        }
        CHECK_FALSE(IsLoaded(platform, L"nvml.dll"));
    }
    const FakePlatform platform({Fault::Refuses, Source::SetupApi, 0});
    TakeSnapshot({Depth::Drivers, 10'000, true});
    CHECK(IsLoaded(platform, L"nvml.dll"));
}

TEST_CASE("After all sources have answered, no driver is open and no thread is left")
{
    const FakePlatform platform({});
    TakeSnapshot({Depth::Drivers, 10'000, false});
    CHECK(platform.OpenDrivers() == 0);
    CHECK(platform.RunningThreads() == 0);
}

TEST_CASE("If SetupAPI hangs, DXGI's adapters are the cards")
{
    const auto healthy = RunWith({});
    for (int number = 0; number < CallsOf(healthy, Source::SetupApi); number += 7) {
        CAPTURE(number);
        const auto run = RunWith({Fault::Hangs, Source::SetupApi, number});
        CHECK(run.End(Source::SetupApi) == NoAnswer());
        CHECK(run.End(Source::DriverKey) == NoAnswer());
        REQUIRE(run.findings.cards.size() == 2);
        for (const auto& card : run.findings.cards) {
            CHECK(card.Of(P::InstanceId) == Value{NoAnswer(), Source::SetupApi});
            CHECK(card.Of(P::DedicatedMemoryBytes).source == Source::Dxgi);
            CHECK(std::get<Displays>(card.Of(P::Displays).data).size() == 1);
        }
    }
}

} // namespace

} // namespace orvel::shared::inventory
