#include "Print.h"

#include <algorithm>
#include <numeric>

#include "Readings.h"
#include "matching/Cards.h"

namespace orvel::shared::inventory {

namespace {

using D = DeviceProperty;
using P = Property;

const auto missing = Unavailable(Reason::Missing);

// --- by LUID ---

TEST_CASE("LUIDs distinguish equal cards")
{
    const auto cards = CardsOf(TwoEqualCards());
    REQUIRE(cards.size() == 3);
    CHECK(AnswerOf(cards[0], P::InstanceId) == Known(firstId));
    CHECK(AnswerOf(cards[0], P::DedicatedMemoryBytes) == Known(12 * gibibyte));
    CHECK(AnswerOf(cards[0], P::Luid) == Known(uint64_t{7}));
    CHECK(AnswerOf(cards[0], P::BiosVersion) == Known("first"));
    CHECK(AnswerOf(cards[0], P::Integrated) == Known(false));
    CHECK(GdiNamesOf(cards[0]) == std::vector<std::string>{"\\\\.\\DISPLAY1"});
    CHECK(AnswerOf(cards[1], P::InstanceId) == Known(secondId));
    CHECK(AnswerOf(cards[1], P::DedicatedMemoryBytes) == Known(24 * gibibyte));
    CHECK(AnswerOf(cards[1], P::BiosVersion) == Known("second"));
    CHECK(AnswerOf(cards[1], P::Integrated) == Known(true));
    CHECK(GdiNamesOf(cards[1]) == std::vector<std::string>{"\\\\.\\DISPLAY2", "\\\\.\\DISPLAY10"});
}

TEST_CASE("Every order of devices, adapters and displays gives the same cards")
{
    const auto expected = CardsOf(TwoEqualCards());
    std::vector<std::size_t> devices{0, 1}, adapters{0, 1, 2}, paths{0, 1, 2};
    int orders = 0;
    do {
        do {
            do {
                const auto healthy = TwoEqualCards();
                auto readings = healthy;
                for (std::size_t index = 0; index < 2; ++index) {
                    readings.devices[index] = healthy.devices[devices[index]];
                    readings.driverKeys[index] = healthy.driverKeys[devices[index]];
                }
                for (std::size_t index = 0; index < 3; ++index) {
                    readings.adapters[index] = healthy.adapters[adapters[index]];
                    readings.paths[index] = healthy.paths[paths[index]];
                }
                CHECK(CardsOf(readings) == expected);
                ++orders;
            } while (std::next_permutation(paths.begin(), paths.end()));
        } while (std::next_permutation(adapters.begin(), adapters.end()));
    } while (std::next_permutation(devices.begin(), devices.end()));
    CHECK(orders == 72);
}

TEST_CASE("A card whose LUID DXGI does not list is not matched by its identifiers")
{
    auto readings = HealthyReadings();
    readings.devices = {GeForce(1, 7)};
    readings.adapters = {GeForceAdapter(8, 12 * gibibyte)};
    const auto cards = CardsOf(readings);
    REQUIRE(cards.size() == 1); // the adapter matches the device, so it is not a separate card
    CHECK(AnswerOf(cards[0], P::SharedMemoryBytes) == Unavailable(Reason::NotListed));
}

TEST_CASE("Of linked cards, which share a LUID, the first has the values of that LUID")
{
    auto readings = HealthyReadings();
    readings.devices = {GeForce(1, 7), GeForce(2, 7)};
    At(readings.devices[0], D::PhysicalAdapterIndex) = NumberProperty(1);
    readings.adapters = {GeForceAdapter(7, 12 * gibibyte)};
    readings.paths = {PathTo(7, u"\\\\.\\DISPLAY1")};
    readings.integrated = {{7, Known(false)}};
    const auto cards = CardsOf(readings);
    REQUIRE(cards.size() == 2);
    const auto& other = CardOf(cards, firstId);
    CHECK(AnswerOf(other, P::Luid) == Known(uint64_t{7}));
    CHECK(AnswerOf(other, P::SharedMemoryBytes) == Unavailable(Reason::Linked));
    CHECK(AnswerOf(other, P::Displays) == Unavailable(Reason::Linked));
    const auto& first = CardOf(cards, secondId);
    CHECK(AnswerOf(first, P::Luid) == Known(uint64_t{7}));
    CHECK(AnswerOf(first, P::DedicatedMemoryBytes) == Known(12 * gibibyte));
    CHECK(AnswerOf(first, P::Integrated) == Known(false));
    CHECK(GdiNamesOf(first).size() == 1);
}

TEST_CASE("Linked cards have no values of their LUID if none or several of them are the first")
{
    for (const auto& index : {Refused(1168), NumberProperty(0), NumberProperty(1)}) {
        auto readings = HealthyReadings();
        readings.devices = {GeForce(1, 7), GeForce(2, 7)};
        At(readings.devices[0], D::PhysicalAdapterIndex) = index;
        At(readings.devices[1], D::PhysicalAdapterIndex) = index;
        readings.adapters = {GeForceAdapter(7, 12 * gibibyte)};
        for (const auto& card : CardsOf(readings)) {
            CHECK(AnswerOf(card, P::SharedMemoryBytes) == Unavailable(Reason::Linked));
        }
    }
}

// --- by identifiers ---

TEST_CASE("Without LUIDs, one device and one adapter with the same identifiers are one card")
{
    auto readings = HealthyReadings();
    readings.devices = {GeForceWithoutLuid(1)};
    readings.adapters = {GeForceAdapter(7, 12 * gibibyte)};
    readings.paths = {PathTo(7, u"\\\\.\\DISPLAY1")};
    const auto cards = CardsOf(readings);
    REQUIRE(cards.size() == 1);
    CHECK(cards[0].Of(P::Luid) == Value{Known(uint64_t{7}), Source::Dxgi});
    CHECK(AnswerOf(cards[0], P::DedicatedMemoryBytes) == Known(12 * gibibyte));
    CHECK(GdiNamesOf(cards[0]).size() == 1);
}

TEST_CASE("Without LUIDs, equal cards have only the values that all of their adapters share")
{
    auto readings = HealthyReadings();
    readings.devices = {GeForceWithoutLuid(1), GeForceWithoutLuid(2)};
    readings.adapters = {GeForceAdapter(7, 12 * gibibyte), GeForceAdapter(8, 24 * gibibyte)};
    readings.paths = {PathTo(7, u"\\\\.\\DISPLAY1")};
    const auto cards = CardsOf(readings);
    REQUIRE(cards.size() == 2);
    for (const auto& card : cards) {
        CHECK(AnswerOf(card, P::SharedMemoryBytes) == Known(16 * gibibyte));
        CHECK(AnswerOf(card, P::DedicatedMemoryBytes) == Unavailable(Reason::CannotTell));
        CHECK(AnswerOf(card, P::Luid) == missing); // SetupAPI is the preferred source
        CHECK(AnswerOf(card, P::Displays) == Unavailable(Reason::NoLuid));
    }
}

TEST_CASE("Without LUIDs, equal cards are matched only if there are as many adapters as devices")
{
    for (const std::size_t adapters : {1U, 3U}) {
        auto readings = HealthyReadings();
        readings.devices = {GeForceWithoutLuid(1), GeForceWithoutLuid(2)};
        for (uint64_t luid = 1; luid <= adapters; ++luid) {
            readings.adapters.push_back(GeForceAdapter(luid, 12 * gibibyte));
        }
        const auto cards = CardsOf(readings);
        CHECK(cards.size() == 2);
        for (const auto& card : cards) {
            CHECK(AnswerOf(card, P::SharedMemoryBytes) == Unavailable(Reason::CannotTell));
        }
    }
}

TEST_CASE("A device without a subsystem matches every adapter of the model")
{
    auto readings = HealthyReadings();
    readings.devices = {GeForceWithoutLuid(1), GeForceWithoutLuid(2)};
    At(readings.devices[1], D::HardwareIds) = PropertyOf(std::vector<std::u16string>{u"PCI\\VEN_10DE&DEV_2504"});
    auto other = GeForceAdapter(8, 24 * gibibyte);
    other.subsystemId = 0x11223344;
    readings.adapters = {GeForceAdapter(7, 12 * gibibyte), other};
    for (const auto& card : CardsOf(readings)) { // two devices and two adapters, which the subsystem cannot distinguish
        CHECK(AnswerOf(card, P::SharedMemoryBytes) == Known(16 * gibibyte));
        CHECK(AnswerOf(card, P::DedicatedMemoryBytes) == Unavailable(Reason::CannotTell));
    }
}

TEST_CASE("A disabled card, which has no LUID, gets no values of an equal card's adapter")
{
    auto readings = HealthyReadings();
    readings.devices = {GeForce(1, 7), GeForceWithoutLuid(2)};
    At(readings.devices[1], D::DevNodeStatus) = NumberProperty(0x400);
    At(readings.devices[1], D::ProblemCode) = NumberProperty(22);
    readings.adapters = {GeForceAdapter(7, 12 * gibibyte)};
    const auto cards = CardsOf(readings);
    REQUIRE(cards.size() == 2);
    CHECK(AnswerOf(CardOf(cards, firstId), P::DedicatedMemoryBytes) == Known(12 * gibibyte));
    CHECK(AnswerOf(CardOf(cards, secondId), P::SharedMemoryBytes) == Unavailable(Reason::NotListed));
    CHECK(AnswerOf(CardOf(cards, secondId), P::Problem) == Known("DISABLED"));
}

} // namespace

} // namespace orvel::shared::inventory
