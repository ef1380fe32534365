#include "Print.h"

#include <algorithm>

#include "Readings.h"
#include "matching/Cards.h"

namespace orvel::shared::inventory {

namespace {

using D = DeviceProperty;
using K = DriverKeyValue;
using P = Property;

const auto missing = Unavailable(Reason::Missing);

std::vector<std::string> InstanceIdsOf(const std::vector<Card>& cards)
{
    std::vector<std::string> ids;
    for (const auto& card : cards) {
        ids.push_back(TextOf(card.Of(P::InstanceId)));
    }
    return ids;
}

// --- adapters without a device, devices without an adapter ---

TEST_CASE("A DXGI adapter without a device is a separate card")
{
    const auto cards = CardsOf(TwoEqualCards());
    const auto& software = cards.back();
    CHECK(AnswerOf(software, P::InstanceId) == Unavailable(Reason::NoDevice));
    CHECK(AnswerOf(software, P::DriverVersion) == Unavailable(Reason::NoDevice));
    CHECK(software.Of(P::Kind) == Value{Known("software"), Source::Dxgi});
    CHECK(software.Of(P::Name) == Value{Known("Microsoft Basic Render Driver"), Source::Dxgi});
    CHECK(AnswerOf(software, P::Vendor) == Known("Microsoft"));
    CHECK(AnswerOf(software, P::DedicatedMemoryBytes) == Known(uint64_t{0})); // DXGI reports 0
    CHECK(AnswerOf(software, P::BoardMemoryBytes) == Unsupported(Reason::NoSource));
    CHECK(AnswerOf(software, P::Displays) == Known(Displays()));
}

TEST_CASE("DXGI's flags determine the kind of an adapter without a device")
{
    struct Flags {
        uint32_t number;
        const char* kind;
    };
    for (const auto& [number, kind] : {Flags{0, "other"}, Flags{1, "remote"}, Flags{2, "software"}, Flags{3, "software"}}) {
        auto readings = HealthyReadings();
        readings.adapters = {GeForceAdapter(7, 0)};
        readings.adapters[0].flags = number;
        CHECK(AnswerOf(CardsOf(readings).at(0), P::Kind) == Known(kind));
    }
}

TEST_CASE("A device that DXGI does not list is still a card")
{
    auto readings = HealthyReadings();
    readings.devices = {GeForce(1, 7)};
    const auto cards = CardsOf(readings);
    REQUIRE(cards.size() == 1);
    CHECK(cards[0].Of(P::SharedMemoryBytes) == Value{Unavailable(Reason::NotListed), Source::Dxgi});
    CHECK(AnswerOf(cards[0], P::Name) == Known("NVIDIA GeForce RTX 3060"));
}

TEST_CASE("The memory of a card that DXGI does not list comes from the driver key")
{
    auto readings = HealthyReadings();
    readings.devices = {GeForce(1, 7)};
    readings.driverKeys = {EmptyKey()};
    At(readings.driverKeys[0], K::QwMemorySize) = RegistryBytes(11, BytesOf(24 * gibibyte, 8));
    CHECK(CardsOf(readings)[0].Of(P::DedicatedMemoryBytes) == Value{Known(24 * gibibyte), Source::DriverKey});
}

TEST_CASE("An indirect display gets no values of the card that renders for it")
{
    auto readings = HealthyReadings();
    auto device = BareDevice(u"ROOT\\DISPLAY\\0000");
    At(device, D::IndirectDisplay) = BooleanProperty(true);
    At(device, D::Luid) = LongProperty(8);
    readings.devices = {GeForce(1, 7), device};
    readings.adapters = {GeForceAdapter(7, 12 * gibibyte), GeForceAdapter(8, 12 * gibibyte)};
    readings.paths = {PathTo(8, u"\\\\.\\DISPLAY2")};
    readings.integrated = {{7, Known(false)}, {8, Known(false)}};
    const auto cards = CardsOf(readings);
    REQUIRE(cards.size() == 2);
    const auto& display = CardOf(cards, "ROOT\\DISPLAY\\0000");
    CHECK(AnswerOf(display, P::Kind) == Known("indirect"));
    for (const auto property : {P::SharedMemoryBytes, P::DedicatedSystemMemoryBytes}) {
        CHECK(AnswerOf(display, property) == Unavailable(Reason::BelongsToOther));
    }
    for (const auto property : {P::Name, P::Vendor, P::VendorId, P::DeviceId, P::SubsystemId, P::Revision,
                                P::DedicatedMemoryBytes, P::Integrated}) {
        CAPTURE(RowOf(property).name);
        CHECK(AnswerOf(display, property).status != Status::Known);
    }
    CHECK(GdiNamesOf(display).size() == 1);
}

TEST_CASE("The vendor's name follows from the vendor id, whichever source reports the id")
{
    auto readings = TwoEqualCards();
    At(readings.devices[0], D::HardwareIds) = PropertyOf(std::vector<std::u16string>{u"PCI\\VEN_0000&DEV_0000"});
    At(readings.devices[1], D::HardwareIds) = Refused(5);
    const auto cards = CardsOf(readings);
    CHECK(CardOf(cards, firstId).Of(P::Vendor) == Value{Unavailable(Reason::NotInTable), Source::SetupApi});
    CHECK(CardOf(cards, secondId).Of(P::VendorId) == Value{Known(uint64_t{0x10DE}), Source::Dxgi});
    CHECK(CardOf(cards, secondId).Of(P::Vendor) == Value{Known("NVIDIA"), Source::Dxgi});
}

// --- sources that fail ---

TEST_CASE("If DXGI fails, its values report the failure, and those of other sources stay")
{
    const auto healthy = CardsOf(TwoEqualCards());
    for (const auto& end : {Failed(0x887A0004), NoAnswer(), Unavailable(Reason::NotPresent), NotAsked(Reason::Depth)}) {
        auto readings = TwoEqualCards();
        readings.adapters.clear();
        readings.End(Source::Dxgi) = end;
        const auto cards = CardsOf(readings);
        REQUIRE(cards.size() == 2);
        for (std::size_t card = 0; card < 2; ++card) {
            for (std::size_t property = 0; property < propertyCount; ++property) {
                const auto& value = cards[card].values[property];
                const auto& before = healthy[card].values[property];
                CAPTURE(RowOf(static_cast<Property>(property)).name);
                if (before.source == Source::Dxgi && property != static_cast<std::size_t>(P::DedicatedMemoryBytes)) {
                    CHECK(value == Value{end, Source::Dxgi});
                } else if (before.source != Source::Dxgi) {
                    CHECK(value == before);
                }
            }
        }
    }
}

TEST_CASE("If DXGI fails to describe an adapter, the card without an entry has failed values")
{
    auto readings = TwoEqualCards();
    readings.adapters.erase(readings.adapters.begin());
    readings.End(Source::Dxgi) = Failed(0x887A0001);
    const auto cards = CardsOf(readings);
    CHECK(AnswerOf(CardOf(cards, firstId), P::SharedMemoryBytes) == Failed(0x887A0001));
    CHECK(AnswerOf(CardOf(cards, secondId), P::SharedMemoryBytes) == Known(16 * gibibyte));
}

TEST_CASE("If SetupAPI fails, DXGI's adapters are the cards")
{
    for (const auto& end : {Failed(5), NoAnswer()}) {
        auto readings = TwoEqualCards();
        readings.devices.clear();
        readings.driverKeys.clear();
        readings.End(Source::SetupApi) = end;
        const auto cards = CardsOf(readings);
        REQUIRE(cards.size() == 3);
        const auto nvidia = std::count_if(cards.begin(), cards.end(),
                                          [](const Card& card) { return AnswerOf(card, P::Vendor) == Known("NVIDIA"); });
        CHECK(nvidia == 2);
        for (const auto& card : cards) {
            CHECK(AnswerOf(card, P::InstanceId) == end);
            CHECK(card.Of(P::Luid).source == Source::Dxgi);
        }
    }
}

TEST_CASE("If SetupAPI stops early, the adapters of the missing devices are cards")
{
    auto readings = TwoEqualCards();
    readings.devices.pop_back();
    readings.driverKeys.pop_back();
    readings.End(Source::SetupApi) = Failed(13);
    const auto cards = CardsOf(readings);
    REQUIRE(cards.size() == 3);
    CHECK(AnswerOf(cards[0], P::InstanceId) == Known(firstId));
    CHECK(AnswerOf(cards[1], P::InstanceId) == Failed(13));
    CHECK(AnswerOf(cards[2], P::InstanceId) == Failed(13));
}

TEST_CASE("If the display configuration fails, the displays have failed and are not an empty list")
{
    auto readings = TwoEqualCards();
    readings.paths.clear();
    readings.End(Source::DisplayConfig) = Failed(5);
    for (const auto& card : CardsOf(readings)) {
        CHECK(card.Of(P::Displays) == Value{Failed(5), Source::DisplayConfig});
    }
}

TEST_CASE("If the driver keys do not arrive in time, the values of the other sources stay")
{
    auto readings = TwoEqualCards();
    readings.driverKeys.clear();
    readings.End(Source::DriverKey) = NoAnswer();
    for (auto& device : readings.devices) {
        At(device, D::DriverVersion) = Refused(1168);
    }
    const auto cards = CardsOf(readings);
    CHECK(cards[0].Of(P::DriverVersion) == Value{missing, Source::SetupApi}); // the most preferred source
    CHECK(AnswerOf(cards[0], P::DedicatedMemoryBytes) == Known(12 * gibibyte));
}

TEST_CASE("A computer without adapters has no cards")
{
    CHECK(CardsOf(HealthyReadings()).empty());
}

// --- which answer decides ---

TEST_CASE("The first known answer wins, then an excluded source, then the first existing answer")
{
    AnswersBySource sources;
    const auto at = [&](Source source) -> Answer& { return sources[static_cast<std::size_t>(source)].otherwise; };
    constexpr unsigned nvidia = 0x10DE;
    const auto resolve = [&] { return Resolve(P::CoreCount, nvidia, sources); };
    at(Source::Nvml) = Known(uint64_t{1});
    at(Source::Nvapi) = Known(uint64_t{2});
    CHECK(resolve() == Value{Known(uint64_t{1}), Source::Nvml});
    at(Source::Nvml) = Failed(3);
    CHECK(resolve() == Value{Known(uint64_t{2}), Source::Nvapi});
    at(Source::Nvapi) = NotAsked(Reason::Asleep);
    CHECK(resolve() == Value{NotAsked(Reason::Asleep), Source::Nvapi});
    at(Source::Nvapi) = Unsupported(Reason::NotSupported);
    CHECK(resolve() == Value{Failed(3), Source::Nvml});
    at(Source::Nvml) = Unavailable(Reason::NotPresent);
    CHECK(resolve() == Value{Unsupported(Reason::NotSupported), Source::Nvapi});
    at(Source::Nvapi) = Unavailable(Reason::NotPresent);
    CHECK(resolve() == Value{Unavailable(Reason::NotPresent), Source::Nvml});
}

TEST_CASE("A property without a source for the vendor is unsupported, for an unknown vendor unavailable")
{
    const AnswersBySource sources;
    CHECK(Resolve(P::MemoryType, 0x10DE, sources) == Value{Unsupported(Reason::NoSource), {}});
    CHECK(Resolve(P::CoreCount, 0x8086, sources) == Value{Unsupported(Reason::NoSource), {}});
    CHECK(Resolve(P::DriverVersionMarketing, 0x8086, sources) == Value{Unsupported(Reason::NoSource), {}});
    CHECK(Resolve(P::CoreCount, {}, sources) == Value{Unavailable(Reason::VendorUnknown), {}});
}

// --- order ---

TEST_CASE("PCI cards come first, by location, then other devices by their id, then DXGI's own adapters")
{
    auto readings = HealthyReadings();
    auto onSegment = GeForce(1, 3);
    onSegment.instanceId = PropertyOf(u"PCI\\AAA");
    At(onSegment, D::BusNumber) = NumberProperty(0x101);
    auto withoutPlace = GeForce(3, 4);
    withoutPlace.instanceId = PropertyOf(u"PCI\\BBB");
    At(withoutPlace, D::BusNumber) = NumberProperty(0xFFFFFFFF);
    readings.devices = {BareDevice(u"ROOT\\DISPLAY\\0000"), onSegment,     withoutPlace,
                        BareDevice(u"ACPI\\QCOM0C36\\2"),   GeForce(2, 1), GeForce(1, 2)};
    DxgiAdapter software;
    software.vendorId = 0x1414;
    software.luid = 9;
    readings.adapters = {software};
    const std::vector<std::string> expected{
        firstId, secondId, "PCI\\AAA", "ACPI\\QCOM0C36\\2", "PCI\\BBB", "ROOT\\DISPLAY\\0000", ""};
    CHECK(InstanceIdsOf(CardsOf(readings)) == expected);
    std::reverse(readings.devices.begin(), readings.devices.end());
    CHECK(InstanceIdsOf(CardsOf(readings)) == expected);
}

// --- displays ---

TEST_CASE("A display has the values of the configuration, and none for missing values")
{
    auto readings = TwoEqualCards();
    DisplayPath bare;
    bare.luid = 7;
    bare.outputTechnology = 7;
    readings.paths = {PathTo(7, u"\\\\.\\DISPLAY1"), bare};
    readings.paths[0].mode->x = -1920;
    bare.refreshDenominator = 1; // 0 Hz
    readings.paths[1] = bare;
    const auto cards = CardsOf(readings);
    const auto& displays = std::get<Displays>(CardOf(cards, firstId).Of(P::Displays).data);
    REQUIRE(displays.size() == 2);
    CHECK(displays[0] == Display());
    CHECK(displays[1].monitorName == "DELL U2720Q");
    CHECK(displays[1].width == 3840);
    CHECK(displays[1].height == 2160);
    CHECK(displays[1].refreshMillihertz == 59'940); // 60000000 / 1001 = 59940.06
    CHECK(displays[1].connector == "DisplayPort");
    CHECK(displays[1].primary == false);
}

} // namespace

} // namespace orvel::shared::inventory
