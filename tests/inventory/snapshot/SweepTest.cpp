// Every call that a snapshot makes fails once and hangs once. Then exactly the values of that source change, and they report
// the failure.

#include "../Print.h"

#include <utility>

#include "../Readings.h"
#include "FakePlatform.h"
#include "snapshot/Snapshot.h"

namespace orvel::shared::inventory {

namespace {

using P = Property;

constexpr Source askedSources[] = {Source::SetupApi, Source::DriverKey, Source::DisplayConfig, Source::Dxgi};

struct Run {
    Findings findings;
    std::array<int, sourceCount> calls{};
    bool isLuidRefused = false;

    const Answer& End(Source source) const { return findings.sources[static_cast<std::size_t>(source)].end; }
};

Run RunWith(const Fault& fault)
{
    const FakePlatform platform(fault);
    const uint32_t limit = fault.kind == Fault::Hangs ? 400 : 10'000;
    Run run{TakeSnapshot({Depth::Graphics, limit, false}), {}, false};
    for (const auto source : askedSources) {
        run.calls[static_cast<std::size_t>(source)] = platform.Calls(source);
    }
    run.isLuidRefused = platform.IsLuidRefused();
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

/// Whether another source has replaced the value, or could at a greater depth.
bool HasOtherSource(const Value& value, const Value& before, Source source)
{
    const bool isOther = IsKnown(value) || (value.status == Status::NotAsked && DepthOf(*value.source) == Depth::Drivers);
    return isOther && before.source == source && value.source != source;
}

/// Whether a changed value reports that its source failed.
bool SaysRefused(const Value& value, Source source)
{
    return value.status == Status::Failed && value.source == source && value.code == RefusalOf(source);
}

/// Without its LUID, one of two equal cards cannot be distinguished from the other. Its memory still comes from the driver
/// key.
bool IsUnmatched(const Value& value, const Value& before, const Run& run)
{
    const bool isSame = value.source == Source::DriverKey && value.data == before.data;
    return run.isLuidRefused && (isSame || value.reason == Reason::CannotTell || value.reason == Reason::NoLuid);
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
    const auto& first = CardOnBus(healthy, 1);
    CHECK(first.Of(P::DedicatedMemoryBytes) == Value{Known(12 * gibibyte), Source::Dxgi});
    CHECK(first.Of(P::BiosVersion).data == Data("first"));
    CHECK(std::get<Displays>(first.Of(P::Displays).data).at(0).width == 1920);
    const auto& second = CardOnBus(healthy, 2);
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
    for (const auto source : {Source::DriverKey, Source::DisplayConfig, Source::Dxgi}) {
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
