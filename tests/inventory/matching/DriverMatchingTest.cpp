#include "Print.h"

#include <algorithm>

#include "Readings.h"
#include "matching/Cards.h"
#include "matching/DriverMatching.h"
#include "matching/Ranges.h"

namespace orvel::shared::inventory {

namespace {

using P = Property;

/// GeForce as a driver lists it.
DriverDevice ListedGeForce()
{
    DriverDevice device;
    device.vendorId = 0x10DE;
    device.deviceId = 0x2504;
    device.subsystemId = 0x40741458;
    return device;
}

DriverDevice NvmlDevice(uint32_t bus, const std::string& uuid)
{
    auto device = ListedGeForce();
    device.address = {0, bus, 0, 0};
    device.answers = {{P::Uuid, Known(uuid)}, {P::CoreCount, Known(uint64_t{3584})}};
    return device;
}

DriverDevice NvapiDevice(uint32_t bus, std::optional<uint64_t> luid, bool isIntegrated)
{
    auto device = ListedGeForce();
    device.luid = luid;
    device.address = {{}, bus, 0, {}};
    device.revision = 0xA1;
    device.answers = {{P::Integrated, Known(isIntegrated)}, {P::MemoryBusWidthBits, Known(uint64_t{192})}};
    return device;
}

/// A GPU of ADLX without a place.
DriverDevice Radeon(std::optional<uint64_t> luid, uint64_t memoryBytes)
{
    DriverDevice device;
    device.luid = luid;
    device.vendorId = 0x1002;
    device.deviceId = 0x73BF;
    device.answers = {{P::BoardMemoryBytes, Known(memoryBytes)}, {P::MemoryType, Known("GDDR6")}};
    return device;
}

CardKey RadeonCard(std::optional<uint64_t> luid, std::optional<uint64_t> bus)
{
    return {luid, {0, bus, bus ? std::optional<uint64_t>(0) : std::nullopt, 0}, {0x1002, 0x73BF, 0x0E3A1002, 0xC1}, false};
}

/// Two equal cards, as all sources list them; nothing but LUIDs and places distinguishes them.
Readings TwoGeForces(bool haveLuids)
{
    auto readings = HealthyReadings();
    for (const auto source : {Source::Nvml, Source::Nvapi}) {
        readings.End(source) = Known(true);
    }
    readings.devices = {haveLuids ? GeForce(1, 7) : GeForceWithoutLuid(1),
                        haveLuids ? GeForce(2, 8) : GeForceWithoutLuid(2)};
    readings.driverKeys = {EmptyKey(), EmptyKey()};
    readings.adapters = {GeForceAdapter(7, 12 * gibibyte), GeForceAdapter(8, 12 * gibibyte)};
    const auto luid = [haveLuids](uint64_t number) { return haveLuids ? std::optional(number) : std::nullopt; };
    readings.driverDevices[Source::Nvml] = {NvmlDevice(1, "GPU-1"), NvmlDevice(2, "GPU-2")};
    readings.driverDevices[Source::Nvapi] = {NvapiDevice(1, luid(7), false), NvapiDevice(2, luid(8), true)};
    return readings;
}

std::vector<DriverDevice>& DevicesOf(Readings& readings, Source source)
{
    return readings.driverDevices.at(source);
}

TEST_CASE("Two equal cards are the same in every order of all sources")
{
    for (const bool haveLuids : {true, false}) {
        CAPTURE(haveLuids);
        for (unsigned int order = 0; order < 16; ++order) {
            CAPTURE(order);
            auto readings = TwoGeForces(haveLuids);
            if (order & 1) {
                std::reverse(readings.devices.begin(), readings.devices.end());
            }
            if (order & 2) {
                std::reverse(readings.adapters.begin(), readings.adapters.end());
            }
            if (order & 4) {
                std::reverse(DevicesOf(readings, Source::Nvml).begin(), DevicesOf(readings, Source::Nvml).end());
            }
            if (order & 8) {
                std::reverse(DevicesOf(readings, Source::Nvapi).begin(), DevicesOf(readings, Source::Nvapi).end());
            }
            const auto cards = CardsOf(readings);
            REQUIRE(cards.size() == 2);
            CHECK(AnswerOf(CardOf(cards, firstId), P::Uuid) == Known("GPU-1"));
            CHECK(AnswerOf(CardOf(cards, firstId), P::Integrated) == Known(false));
            CHECK(AnswerOf(CardOf(cards, secondId), P::Uuid) == Known("GPU-2"));
            CHECK(AnswerOf(CardOf(cards, secondId), P::Integrated) == Known(true));
            CHECK(ReportsOf(readings)[static_cast<std::size_t>(Source::Nvml)].end == Known(true));
        }
    }
}

TEST_CASE("A card that DXGI does not list has its driver's values")
{
    auto readings = TwoGeForces(true);
    readings.adapters.pop_back();
    DevicesOf(readings, Source::Nvapi).pop_back();
    const auto cards = CardsOf(readings);
    const auto& computing = CardOf(cards, secondId);
    CHECK(AnswerOf(computing, P::Uuid) == Known("GPU-2"));
    CHECK(AnswerOf(computing, P::DedicatedMemoryBytes) == Unavailable(Reason::NotListed));
    CHECK(computing.Of(P::Integrated) == Value{Unavailable(Reason::NotListed), Source::Nvapi});
}

TEST_CASE("A device that Windows does not list is no card, and the source says so")
{
    auto readings = TwoGeForces(true);
    readings.driverDevices[Source::Nvml].push_back(NvmlDevice(9, "GPU-9"));
    CHECK(CardsOf(readings) == CardsOf(TwoGeForces(true)));
    const auto reports = ReportsOf(readings);
    Answer expected = Known(true);
    expected.reason = Reason::ExtraDevice;
    CHECK(reports[static_cast<std::size_t>(Source::Nvml)].end == expected);
    CHECK(reports[static_cast<std::size_t>(Source::Nvapi)].end == Known(true));
}

TEST_CASE("A source that was refused in the middle has failed for the cards without an entry")
{
    auto readings = TwoGeForces(true);
    readings.End(Source::Nvml) = Failed(15);
    DevicesOf(readings, Source::Nvml).pop_back();
    const auto cards = CardsOf(readings);
    CHECK(AnswerOf(CardOf(cards, firstId), P::Uuid) == Known("GPU-1"));
    CHECK(CardOf(cards, secondId).Of(P::Uuid) == Value{Failed(15), Source::Nvml});
    CHECK(ReportsOf(readings)[static_cast<std::size_t>(Source::Nvml)].end == Failed(15));
}

TEST_CASE("Segments distinguish equal buses where both sides know them")
{
    const CardKey low{{}, {0, 1, 0, 0}, {0x10DE, 0x2504, {}, {}}, false};
    const CardKey high{{}, {1, 1, 0, 0}, {0x10DE, 0x2504, {}, {}}, false};
    auto nvml = NvmlDevice(1, "GPU-1");
    nvml.address.segment = 1;
    const auto matches = MatchDriver({low, high}, {nvml});
    CHECK(matches.cards[0].reason == Reason::NotListed);
    CHECK(matches.cards[1].devices == Indexes{0});

    // NVAPI knows no segment, so it may mean either.
    const auto unknown = MatchDriver({low, high}, {NvapiDevice(1, {}, false)});
    CHECK(unknown.cards[0].reason == Reason::CannotTell);
    CHECK(unknown.cards[1].reason == Reason::CannotTell);
    CHECK(unknown.areAllMatched);
}

TEST_CASE("Two devices at one place are nobody's")
{
    const CardKey card{{}, {0, 1, 0, 0}, {0x10DE, 0x2504, {}, {}}, false};
    const auto matches = MatchDriver({card}, {NvmlDevice(1, "GPU-1"), NvmlDevice(1, "GPU-2")});
    CHECK(matches.cards[0].devices.empty());
    CHECK(matches.cards[0].reason == Reason::CannotTell);
}

TEST_CASE("A place does not make another card's device this card's")
{
    CardKey card{{}, {0, 1, 0, 0}, {0x10DE, 0x2684, {}, {}}, false};
    auto matches = MatchDriver({card}, {NvmlDevice(1, "GPU-1")});
    CHECK(matches.cards[0].reason == Reason::NotListed);
    CHECK_FALSE(matches.areAllMatched);

    card.identifiers.device = 0x2504;
    card.luid = 7;
    CHECK(MatchDriver({card}, {NvapiDevice(1, 8, false)}).cards[0].reason == Reason::NotListed);
    CHECK(MatchDriver({card}, {NvapiDevice(9, 7, false)}).cards[0].devices == Indexes{0}); // the LUID is enough
}

TEST_CASE("Cards that share a LUID are matched by their places")
{
    const CardKey first{7, {0, 1, 0, 0}, {0x10DE, 0x2504, {}, {}}, false};
    const CardKey second{7, {0, 2, 0, 0}, {0x10DE, 0x2504, {}, {}}, false};
    const auto matches = MatchDriver({first, second}, {NvapiDevice(2, 7, true), NvapiDevice(1, 7, false)});
    CHECK(matches.cards[0].devices == Indexes{1});
    CHECK(matches.cards[1].devices == Indexes{0});
}

TEST_CASE("Two equal Radeons are matched by LUID, else by place, else by what they have in common")
{
    const auto withLuids = MatchDriver({RadeonCard(7, 1), RadeonCard(8, 2)}, {Radeon(8, 2 * gibibyte), Radeon(7, gibibyte)});
    CHECK(withLuids.cards[0].devices == Indexes{1});
    CHECK(withLuids.cards[1].devices == Indexes{0});

    std::vector<DriverDevice> placed{Radeon({}, 2 * gibibyte), Radeon({}, gibibyte)};
    placed[0].address = {{}, 2, 0, 0};
    placed[1].address = {{}, 1, 0, 0};
    const auto byPlace = MatchDriver({RadeonCard(7, 1), RadeonCard(8, 2)}, placed);
    CHECK(byPlace.cards[0].devices == Indexes{1});
    CHECK(byPlace.cards[1].devices == Indexes{0});

    const std::vector<DriverDevice> bare{Radeon({}, 2 * gibibyte), Radeon({}, gibibyte)};
    const auto byIdentifiers = MatchDriver({RadeonCard(7, 1), RadeonCard(8, 2)}, bare);
    for (const auto& match : byIdentifiers.cards) {
        CHECK(match.devices.size() == 2);
        const auto answers = DriverAnswers(match, bare, Known(true));
        CHECK(answers.Of(P::MemoryType) == Known("GDDR6"));
        CHECK(answers.Of(P::BoardMemoryBytes) == Unavailable(Reason::CannotTell));
    }
}

TEST_CASE("Identifiers alone match only where there are as many devices as cards")
{
    const std::vector<DriverDevice> one{Radeon({}, gibibyte)};
    CHECK(MatchDriver({RadeonCard({}, {})}, one).cards[0].devices == Indexes{0});
    const auto tooMany = MatchDriver({RadeonCard({}, {}), RadeonCard({}, {})}, one);
    CHECK(tooMany.cards[0].reason == Reason::CannotTell);
    CHECK(tooMany.cards[1].reason == Reason::CannotTell);
    CHECK(MatchDriver({RadeonCard({}, {})}, {one[0], one[0]}).cards[0].reason == Reason::CannotTell);
}

TEST_CASE("An integrated Radeon beside a discrete one is another card")
{
    auto integratedCard = RadeonCard({}, {});
    integratedCard.identifiers.device = 0x164E;
    auto integrated = Radeon({}, gibibyte / 2);
    integrated.deviceId = 0x164E;
    const auto matches = MatchDriver({RadeonCard({}, {}), integratedCard}, {integrated, Radeon({}, 16 * gibibyte)});
    CHECK(matches.cards[0].devices == Indexes{1});
    CHECK(matches.cards[1].devices == Indexes{0});
}

TEST_CASE("A display that shows another card has nothing of that card's driver")
{
    auto indirect = RadeonCard({}, {});
    indirect.showsOtherCard = true;
    const auto matches = MatchDriver({indirect, RadeonCard({}, {})}, {Radeon({}, gibibyte)});
    CHECK(matches.cards[0].reason == Reason::NotListed);
    CHECK(matches.cards[1].devices == Indexes{0});
}

TEST_CASE("A number that no card can have is unusable")
{
    struct Case {
        Property property;
        uint64_t number;
        bool isUsable;
    };
    for (const auto& each : {
             Case{P::BoardMemoryBytes, 0, false},
             Case{P::BoardMemoryBytes, 24 * gibibyte, true},
             Case{P::BoardMemoryBytes, 0xA5A5A5A5A5A5A5A5, false},
             Case{P::MemoryBusWidthBits, 0, false},
             Case{P::MemoryBusWidthBits, 384, true},
             Case{P::CoreCount, 0xA5A5A5A5, false},
             Case{P::CoreCount, 16384, true},
             Case{P::PcieGeneration, 5, true},
             Case{P::PcieGenerationMax, 16, false},
             Case{P::PcieLanes, 64, false},
             Case{P::TemperatureSlowdownCelsius, 0, false},
             Case{P::TemperatureSlowdownCelsius, 95, true},
             Case{P::EccCorrectedErrors, 0, true},
         }) {
        CAPTURE(std::string(RowOf(each.property).name));
        CAPTURE(each.number);
        CHECK(InRange(each.property, Known(each.number)) ==
              (each.isUsable ? Known(each.number) : Unavailable(Reason::Unusable)));
    }
    CHECK(InRange(P::CoreCount, Failed(15)) == Failed(15));

    auto device = NvmlDevice(1, "GPU-1");
    device.answers[P::CoreCount] = Known(uint64_t{0});
    CHECK(DriverAnswers({{0}, Reason::None}, {device}, Known(true)).Of(P::CoreCount) == Unavailable(Reason::Unusable));
}

} // namespace

} // namespace orvel::shared::inventory
