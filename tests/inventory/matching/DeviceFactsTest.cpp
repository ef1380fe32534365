#include "Print.h"

#include "Readings.h"
#include "matching/DeviceFacts.h"

namespace orvel::shared::inventory {

namespace {

using D = DeviceProperty;
using K = DriverKeyValue;
using P = Property;

const auto unusable = Unavailable(Reason::Unusable);
const auto missing = Unavailable(Reason::Missing);

Answer KindOf(const DeviceReading& device)
{
    return FactsOf(device).answers.at(P::Kind);
}

TEST_CASE("A healthy card has every property of SetupAPI")
{
    auto facts = FactsOf(GeForce(1, 7));
    auto& answers = facts.answers;
    CHECK(answers[P::InstanceId] == Known("PCI\\VEN_10DE&DEV_2504&SUBSYS_40741458&REV_A1\\4&0&1"));
    CHECK(answers[P::Kind] == Known("pci"));
    CHECK(answers[P::Name] == Known("NVIDIA GeForce RTX 3060"));
    CHECK(answers[P::VendorId] == Known(uint64_t{0x10DE}));
    CHECK(answers[P::DeviceId] == Known(uint64_t{0x2504}));
    CHECK(answers[P::SubsystemId] == Known(uint64_t{0x40741458}));
    CHECK(answers[P::Revision] == Known(uint64_t{0xA1}));
    CHECK(answers[P::Luid] == Known(uint64_t{7}));
    CHECK(answers[P::PciSegment] == Known(uint64_t{0}));
    CHECK(answers[P::PciBus] == Known(uint64_t{1}));
    CHECK(answers[P::PciDevice] == Known(uint64_t{0}));
    CHECK(answers[P::PciFunction] == Known(uint64_t{0}));
    CHECK(answers[P::DriverVersion] == Known("32.0.15.9672"));
    CHECK(answers[P::DriverVersionMarketing] == Known("596.72"));
    CHECK(answers[P::DriverDate] == Known("2025-05-09"));
    CHECK(answers[P::DriverProvider] == Known("NVIDIA"));
    CHECK(answers[P::DriverInf] == Known("oem12.inf"));
    CHECK(answers[P::Service] == Known("nvlddmkm"));
    CHECK(answers[P::ProblemCode] == Known(uint64_t{0}));
    CHECK(answers[P::Problem] == Known("none"));
    CHECK(answers[P::PowerState] == Known("D0"));
    CHECK_FALSE(facts.isAsleep);
    CHECK_FALSE(facts.showsOtherCard);
}

TEST_CASE("A device without properties has an instance id, a kind, and the identifiers in the id")
{
    auto facts = FactsOf(BareDevice(u"PCI\\VEN_0000&DEV_0000&SUBSYS_00000000&REV_00\\00000000"));
    CHECK(facts.answers[P::Kind] == Known("pci"));
    CHECK(facts.answers[P::VendorId] == Known(uint64_t{0}));
    for (const auto property : {P::Name, P::Luid, P::PciBus, P::PciSegment, P::PciDevice, P::PciFunction, P::DriverVersion,
                                P::DriverVersionMarketing, P::DriverDate, P::Service, P::ProblemCode, P::Problem,
                                P::PowerState, P::PcieGeneration, P::PcieLanesMax}) {
        CAPTURE(RowOf(property).name);
        CHECK(facts.answers[property] == missing);
    }
}

TEST_CASE("The kind follows from the bus")
{
    CHECK(KindOf(BareDevice(u"PCI\\VEN_8086&DEV_56A0\\1")) == Known("pci"));
    CHECK(KindOf(BareDevice(u"PCI\\VEN_1414&DEV_008E&SUBSYS_00000000&REV_00\\5&0")) == Known("paravirtual"));
    CHECK(KindOf(BareDevice(u"ACPI\\QCOM0C36\\2&DABA3FF&0")) == Known("soc"));
    CHECK(KindOf(BareDevice(u"ROOT\\DISPLAY\\0000")) == Known("other"));
    CHECK(KindOf(BareDevice(u"VMBUS\\{da0a7802-e377-4aac-8e77-0558eb1073f8}\\{1}")) == Known("other"));
}

TEST_CASE("An indirect display is recognised by its property or its service")
{
    auto device = BareDevice(u"ROOT\\DISPLAY\\0000");
    At(device, D::IndirectDisplay) = BooleanProperty(true);
    CHECK(KindOf(device) == Known("indirect"));
    At(device, D::IndirectDisplay) = {0, 0, {}}; // exists without a value
    CHECK(KindOf(device) == Known("indirect"));
    At(device, D::IndirectDisplay) = BooleanProperty(false);
    CHECK(KindOf(device) == Known("other"));
    At(device, D::Service) = PropertyOf(u"WUDFRd");
    CHECK(KindOf(device) == Known("indirect"));
    CHECK(FactsOf(device).showsOtherCard);
}

TEST_CASE("A remote display is recognised by its path or its session, before any other kind")
{
    CHECK(KindOf(BareDevice(u"SWD\\REMOTEDISPLAYENUM\\RDPIDD_INDIRECTDISPLAY&SESSIONID_0002")) == Known("remote"));
    auto device = BareDevice(u"ROOT\\DISPLAY\\0000");
    At(device, D::SessionId) = NumberProperty(2);
    At(device, D::IndirectDisplay) = BooleanProperty(true);
    CHECK(KindOf(device) == Known("remote"));
    CHECK(FactsOf(device).showsOtherCard);
}

TEST_CASE("If a property that decides the kind cannot be read, the kind has failed, and only a PCI card keeps DXGI's values")
{
    for (const auto sign : {D::SessionId, D::IndirectDisplay, D::Service}) {
        auto device = BareDevice(u"ROOT\\DISPLAY\\0000");
        At(device, sign) = Refused(5);
        CHECK(KindOf(device) == Failed(5));
        CHECK(FactsOf(device).showsOtherCard);

        auto card = GeForce(1, 7);
        At(card, sign) = Refused(5);
        CHECK(KindOf(card) == Failed(5));
        CHECK_FALSE(FactsOf(card).showsOtherCard);
    }
}

TEST_CASE("A device whose instance id cannot be read has the identifiers of its hardware id")
{
    auto device = GeForce(1, 7);
    device.instanceId = Refused(13);
    auto facts = FactsOf(device);
    CHECK(facts.answers[P::InstanceId] == Failed(13));
    CHECK(facts.answers[P::Kind] == Failed(13));
    CHECK(facts.answers[P::VendorId] == Known(uint64_t{0x10DE}));
    CHECK(facts.answers[P::PciBus] == Known(uint64_t{1}));
}

TEST_CASE("Hardware ids that cannot be read or parsed are not replaced by the instance id")
{
    auto device = GeForce(1, 7);
    At(device, D::HardwareIds) = Refused(5);
    CHECK(FactsOf(device).answers.at(P::VendorId) == Failed(5));
    At(device, D::HardwareIds) = NumberProperty(1);
    CHECK(FactsOf(device).answers.at(P::DeviceId) == unusable);
    At(device, D::HardwareIds) = Refused(1168);
    CHECK(FactsOf(device).answers.at(P::SubsystemId) == Known(uint64_t{0x40741458}));
}

TEST_CASE("The bus number contains bus and segment, the address contains device and function")
{
    auto device = GeForce(1, 7);
    At(device, D::BusNumber) = NumberProperty(0xAB012345); // the upper eight bits are reserved
    At(device, D::Address) = NumberProperty(0x00030002);
    auto facts = FactsOf(device);
    CHECK(facts.answers[P::PciSegment] == Known(uint64_t{0x0123}));
    CHECK(facts.answers[P::PciBus] == Known(uint64_t{0x45}));
    CHECK(facts.answers[P::PciDevice] == Known(uint64_t{3}));
    CHECK(facts.answers[P::PciFunction] == Known(uint64_t{2}));
}

TEST_CASE("An unknown or impossible PCI location is unavailable")
{
    auto device = GeForce(1, 7);
    At(device, D::BusNumber) = NumberProperty(0xFFFFFFFF);
    At(device, D::Address) = NumberProperty(0xFFFFFFFF);
    CHECK(FactsOf(device).answers.at(P::PciBus) == missing);
    CHECK(FactsOf(device).answers.at(P::PciSegment) == missing);
    CHECK(FactsOf(device).answers.at(P::PciDevice) == missing);
    CHECK(FactsOf(device).answers.at(P::PciFunction) == missing);
    At(device, D::Address) = NumberProperty(0x00200008);
    CHECK(FactsOf(device).answers.at(P::PciDevice) == unusable);
    CHECK(FactsOf(device).answers.at(P::PciFunction) == unusable);
    At(device, D::Address) = Refused(31);
    CHECK(FactsOf(device).answers.at(P::PciDevice) == Failed(31));
}

TEST_CASE("A device that is not on PCI has no PCI location, whatever its properties contain")
{
    auto device = BareDevice(u"ACPI\\QCOM0C36\\2");
    At(device, D::BusNumber) = NumberProperty(1);
    At(device, D::Address) = NumberProperty(1);
    for (const auto property : {P::PciSegment, P::PciBus, P::PciDevice, P::PciFunction}) {
        CHECK(FactsOf(device).answers.at(property) == Unsupported(Reason::NotOnPci));
    }
}

TEST_CASE("The problem number is used only if the status bit for a problem is set")
{
    constexpr uint32_t hasProblem = 0x400;
    auto device = GeForce(1, 7);
    At(device, D::ProblemCode) = NumberProperty(22);
    CHECK(FactsOf(device).answers.at(P::ProblemCode) == Known(uint64_t{0}));
    At(device, D::DevNodeStatus) = NumberProperty(hasProblem);
    CHECK(FactsOf(device).answers.at(P::ProblemCode) == Known(uint64_t{22}));
    CHECK(FactsOf(device).answers.at(P::Problem) == Known("DISABLED"));
    At(device, D::ProblemCode) = NumberProperty(99);
    CHECK(FactsOf(device).answers.at(P::ProblemCode) == Known(uint64_t{99}));
    CHECK(FactsOf(device).answers.at(P::Problem) == Unavailable(Reason::NotInTable));
    At(device, D::ProblemCode) = Refused(5);
    CHECK(FactsOf(device).answers.at(P::Problem) == Failed(5));
    At(device, D::DevNodeStatus) = Refused(6);
    CHECK(FactsOf(device).answers.at(P::ProblemCode) == Failed(6));
    At(device, D::DevNodeStatus) = Refused(1168);
    At(device, D::ProblemCode) = NumberProperty(43);
    CHECK(FactsOf(device).answers.at(P::Problem) == Known("FAILED_POST_START"));
}

TEST_CASE("The power state is the most recent one")
{
    auto device = GeForce(1, 7);
    const auto stateOf = [&] { return FactsOf(device).answers.at(P::PowerState); };
    const char* states[] = {"D0", "D1", "D2", "D3"};
    for (uint32_t state = 1; state <= 4; ++state) {
        At(device, D::PowerData) = PowerProperty(state);
        CHECK(stateOf() == Known(states[state - 1]));
    }
    At(device, D::PowerData) = PowerProperty(0);
    CHECK(stateOf() == unusable);
    At(device, D::PowerData) = PowerProperty(5);
    CHECK(stateOf() == unusable);
    At(device, D::PowerData) = PowerProperty(0x101);
    CHECK(stateOf() == unusable);
    At(device, D::PowerData).bytes.resize(7);
    CHECK(stateOf() == unusable);
    At(device, D::PowerData) = NumberProperty(1);
    CHECK(stateOf() == unusable);
}

TEST_CASE("Only a card without a problem can be asleep")
{
    auto device = GeForce(1, 7);
    At(device, D::PowerData) = PowerProperty(4);
    CHECK(FactsOf(device).isAsleep);
    At(device, D::DevNodeStatus) = NumberProperty(0x400);
    At(device, D::ProblemCode) = NumberProperty(22);
    CHECK_FALSE(FactsOf(device).isAsleep);
}

TEST_CASE("A vendor's libraries would wake only sleeping cards of this vendor")
{
    auto asleep = GeForce(1, 7);
    At(asleep, D::PowerData) = PowerProperty(4);
    const std::vector<DeviceReading> one{asleep}, both{GeForce(2, 8), asleep}, awake{GeForce(1, 7)};
    CHECK(WouldWake(Source::Nvml, one));
    CHECK(WouldWake(Source::Nvapi, both));
    CHECK_FALSE(WouldWake(Source::Adlx, both));
    CHECK_FALSE(WouldWake(Source::Nvml, awake));
    CHECK_FALSE(WouldWake(Source::Dxgi, one));
}

TEST_CASE("The link has generations and lanes")
{
    auto device = GeForce(1, 7);
    At(device, D::CurrentLinkSpeed) = NumberProperty(1);
    At(device, D::MaxLinkSpeed) = NumberProperty(4);
    At(device, D::CurrentLinkWidth) = NumberProperty(8);
    At(device, D::MaxLinkWidth) = NumberProperty(16);
    auto facts = FactsOf(device);
    CHECK(facts.answers[P::PcieGeneration] == Known(uint64_t{1}));
    CHECK(facts.answers[P::PcieGenerationMax] == Known(uint64_t{4}));
    CHECK(facts.answers[P::PcieLanes] == Known(uint64_t{8}));
    CHECK(facts.answers[P::PcieLanesMax] == Known(uint64_t{16}));
    At(device, D::CurrentLinkSpeed) = NumberProperty(0);
    At(device, D::MaxLinkWidth) = NumberProperty(64);
    CHECK(FactsOf(device).answers.at(P::PcieGeneration) == unusable);
    CHECK(FactsOf(device).answers.at(P::PcieLanesMax) == unusable);
}

TEST_CASE("NVIDIA's marketing version is derived for NVIDIA's driver only")
{
    auto device = GeForce(1, 7);
    const auto versionOf = [&] { return FactsOf(device).answers.at(P::DriverVersionMarketing); };
    At(device, D::DriverProvider) = PropertyOf(u"Microsoft");
    CHECK(versionOf() == Unavailable(Reason::OtherProvider));
    At(device, D::DriverProvider) = Refused(5);
    CHECK(versionOf() == Failed(5));
    At(device, D::DriverProvider) = PropertyOf(u"NVIDIA");
    At(device, D::DriverVersion) = PropertyOf(u"32.0.15.96720");
    CHECK(versionOf() == unusable);
    At(device, D::DriverVersion) = Refused(1168);
    CHECK(versionOf() == missing);
}

TEST_CASE("Each value of a driver key becomes its property")
{
    auto key = EmptyKey();
    At(key, K::DriverDesc) = RegistryOf(u"AMD Radeon RX 7900 XTX");
    At(key, K::DriverVersion) = RegistryOf(u"32.0.21001.9024");
    At(key, K::ProviderName) = RegistryOf(u"Advanced Micro Devices, Inc.");
    At(key, K::InfPath) = RegistryOf(u"oem3.inf");
    At(key, K::RadeonSoftwareVersion) = RegistryOf(u"25.5.1");
    At(key, K::QwMemorySize) = RegistryBytes(11, BytesOf(24 * gibibyte, 8));
    At(key, K::BiosString) = RegistryOf(u"022.001.002.043");
    At(key, K::DriverDateData) = RegistryBytes(3, BytesOf(133'912'224'000'000'000, 8));
    const auto source = KeyAnswers(key, 0x1002);
    CHECK(source.Of(P::Name) == Known("AMD Radeon RX 7900 XTX"));
    CHECK(source.Of(P::DriverVersion) == Known("32.0.21001.9024"));
    CHECK(source.Of(P::DriverProvider) == Known("Advanced Micro Devices, Inc."));
    CHECK(source.Of(P::DriverInf) == Known("oem3.inf"));
    CHECK(source.Of(P::DriverVersionMarketing) == Known("25.5.1"));
    CHECK(source.Of(P::DedicatedMemoryBytes) == Known(24 * gibibyte));
    CHECK(source.Of(P::BiosVersion) == Known("022.001.002.043"));
    CHECK(source.Of(P::DriverDate) == Known("2025-05-09"));
    CHECK(source.Of(P::Service) == missing);
}

TEST_CASE("NVIDIA's marketing version is derived from the driver key as well")
{
    auto key = EmptyKey();
    At(key, K::DriverVersion) = RegistryOf(u"31.0.15.3161");
    At(key, K::ProviderName) = RegistryOf(u"NVIDIA");
    CHECK(KeyAnswers(key, 0x10DE).Of(P::DriverVersionMarketing) == Known("531.61"));
}

TEST_CASE("The values of a missing driver key are unavailable, those of an unreadable key have failed")
{
    DriverKeyReading key;
    key.error = 1168;
    CHECK(KeyAnswers(key, {}).Of(P::Name) == missing);
    key.error = 5;
    CHECK(KeyAnswers(key, {}).Of(P::DedicatedMemoryBytes) == Failed(5));
}

} // namespace

} // namespace orvel::shared::inventory
