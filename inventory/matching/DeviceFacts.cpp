#include "matching/DeviceFacts.h"

#include <algorithm>
#include <utility>

#include "matching/DriverFacts.h"
#include "matching/Ranges.h"
#include "matching/RawValues.h"
#include "model/Names.h"

namespace orvel::shared::inventory {

namespace {

using D = DeviceProperty;
using K = DriverKeyValue;
using P = Property;

Answer InstanceIdAnswer(const DeviceReading& device)
{
    RawValue text = device.instanceId;
    text.type = types::propertyString;
    return PropertyText(text);
}

// --- identifiers ---

/// The identifiers as numbers, or why there are none. Without hardware ids, those in the instance id count.
Answer ReadIdentifiers(const DeviceReading& device, const std::string& instanceId, Identifiers& identifiers)
{
    std::vector<std::string> ids;
    auto answer = PropertyTexts(device.Of(D::HardwareIds), ids);
    if (answer == Unavailable(Reason::Missing)) {
        ids = {instanceId};
    } else if (!IsKnown(answer)) {
        return answer;
    }
    identifiers = IdentifiersIn(ids).value_or(Identifiers());
    return identifiers.vendor ? Known(true) : Unavailable(Reason::Missing);
}

/// The bus that a device hangs on, from its instance id, or else from its hardware ids.
std::string BusOf(const DeviceReading& device, const std::string& instanceId)
{
    std::vector<std::string> ids{instanceId};
    if (instanceId.empty()) {
        PropertyTexts(device.Of(D::HardwareIds), ids);
    }
    const auto id = std::find_if(ids.begin(), ids.end(), [](const std::string& each) { return !each.empty(); });
    return id == ids.end() ? "" : EnumeratorOf(*id);
}

Answer NumberOr(const std::optional<uint32_t>& number, const Answer& otherwise)
{
    return number ? Known(uint64_t{*number}) : otherwise;
}

Answer NameOr(const char* name, const Answer& otherwise)
{
    return name ? Known(name) : otherwise;
}

void AddIdentifiers(const Answer& answer, DeviceFacts& facts)
{
    const auto otherwise = IsKnown(answer) ? Unavailable(Reason::Missing) : answer;
    const auto& [vendor, device, subsystem, revision] = facts.identifiers;
    facts.answers[P::VendorId] = NumberOr(vendor, otherwise);
    facts.answers[P::DeviceId] = NumberOr(device, otherwise);
    facts.answers[P::SubsystemId] = NumberOr(subsystem, otherwise);
    facts.answers[P::Revision] = NumberOr(revision, otherwise);
}

// --- kind ---

bool IsThere(const RawValue& value)
{
    return value.error == 0;
}

/// Failed where Windows refuses the value.
Answer RefusalOf(const RawValue& value)
{
    return IsThere(value) ? Known(true) : ErrorAnswer(value.error);
}

/// An empty property is a sign as well; only zeros are FALSE.
bool IsTrue(const RawValue& value)
{
    const auto isZero = [](unsigned char byte) { return byte == 0; };
    return IsThere(value) && (value.bytes.empty() || !std::all_of(value.bytes.begin(), value.bytes.end(), isZero));
}

const char* KindByBus(const DeviceFacts& facts)
{
    if (facts.enumerator == "PCI") {
        const bool isParavirtual = facts.identifiers.vendor == 0x1414 && facts.identifiers.device == 0x008E;
        return isParavirtual ? "paravirtual" : "pci";
    }
    return facts.enumerator == "ACPI" ? "soc" : "other";
}

/// The signs of a remote or indirect display come first, whatever the device hangs on; where one cannot be read, the kind is
/// not known.
Answer KindOf(const DeviceReading& device, const DeviceFacts& facts)
{
    constexpr std::string_view remoteDisplay = "SWD\\REMOTEDISPLAYENUM\\";
    if (facts.instanceId.starts_with(remoteDisplay) || IsThere(device.Of(D::SessionId))) {
        return Known("remote");
    }
    if (IsTrue(device.Of(D::IndirectDisplay)) || TextOf(facts.answers.at(P::Service)) == "WUDFRd") {
        return Known("indirect");
    }
    for (const auto& sign : {facts.answers.at(P::InstanceId), RefusalOf(device.Of(D::SessionId)),
                             RefusalOf(device.Of(D::IndirectDisplay)), facts.answers.at(P::Service)}) {
        if (sign.status == Status::Failed) {
            return sign;
        }
    }
    return facts.enumerator.empty() ? Unavailable(Reason::Missing) : Known(KindByBus(facts));
}

/// A device of its own bus shows itself, even where its kind is unknown.
bool ShowsOtherCard(const DeviceFacts& facts)
{
    const auto& kind = facts.answers.at(P::Kind);
    if (IsKnown(kind)) {
        return TextOf(kind) == "remote" || TextOf(kind) == "indirect";
    }
    return facts.enumerator != "PCI" && facts.enumerator != "ACPI";
}

// --- place ---

struct PciPlace {
    Answer segment, bus, device, function;
};

/// The answer for a part of a number: `part` of it where that is at most `limit`.
Answer PartOf(const Answer& number, uint64_t part, uint64_t limit)
{
    if (!IsKnown(number)) {
        return number;
    }
    return part <= limit ? Known(part) : Unavailable(Reason::Unusable);
}

Answer PlaceNumber(const RawValue& value)
{
    constexpr uint64_t notKnown = 0xFFFFFFFF;
    const auto number = PropertyNumber(value);
    return NumberOf(number) == notKnown ? Unavailable(Reason::Missing) : number;
}

PciPlace PlaceOf(const DeviceReading& device)
{
    const auto busNumber = PlaceNumber(device.Of(D::BusNumber));
    const auto address = PlaceNumber(device.Of(D::Address));
    const uint64_t bus = NumberOf(busNumber).value_or(0);
    const uint64_t slot = NumberOf(address).value_or(0);
    return {PartOf(busNumber, bus >> 8 & 0xFFFF, 0xFFFF), PartOf(busNumber, bus & 0xFF, 0xFF),
            PartOf(address, slot >> 16, 31), PartOf(address, slot & 0xFFFF, 7)};
}

void AddPlace(const DeviceReading& device, DeviceFacts& facts)
{
    PciPlace place;
    if (facts.enumerator == "PCI") {
        place = PlaceOf(device);
    } else {
        const auto answer = facts.enumerator.empty() ? facts.answers.at(P::InstanceId) : Unsupported(Reason::NotOnPci);
        place = {answer, answer, answer, answer};
    }
    facts.answers[P::PciSegment] = place.segment;
    facts.answers[P::PciBus] = place.bus;
    facts.answers[P::PciDevice] = place.device;
    facts.answers[P::PciFunction] = place.function;
}

void AddLink(const DeviceReading& device, DeviceFacts& facts)
{
    constexpr std::pair<P, D> numbers[] = {
        {P::PcieGeneration, D::CurrentLinkSpeed},
        {P::PcieGenerationMax, D::MaxLinkSpeed},
        {P::PcieLanes, D::CurrentLinkWidth},
        {P::PcieLanesMax, D::MaxLinkWidth},
    };
    for (const auto& [property, number] : numbers) {
        facts.answers[property] = InRange(property, PropertyNumber(device.Of(number)));
    }
}

// --- state ---

/// The problem's number counts only where the device's status says that there is one.
Answer ProblemCodeOf(const DeviceReading& device)
{
    constexpr uint64_t hasProblem = 0x400;
    const auto status = PropertyNumber(device.Of(D::DevNodeStatus));
    if (const auto bits = NumberOf(status); bits && (*bits & hasProblem) == 0) {
        return Known(uint64_t{0});
    }
    return status.status == Status::Failed ? status : PropertyNumber(device.Of(D::ProblemCode));
}

Answer ProblemOf(const Answer& code)
{
    const auto number = NumberOf(code);
    return number ? NameOr(ProblemName(*number), Unavailable(Reason::NotInTable)) : code;
}

/// The most recent state in a CM_POWER_DATA: 1 is D0; 0 is not specified.
Answer PowerStateOf(const RawValue& value)
{
    if (value.error != 0) {
        return ErrorAnswer(value.error);
    }
    constexpr std::size_t position = 4;
    constexpr const char* states[] = {"D0", "D1", "D2", "D3"};
    if (value.type != types::propertyBinary || value.bytes.size() < position + 4) {
        return Unavailable(Reason::Unusable);
    }
    const auto& bytes = value.bytes;
    const bool isState = bytes[position] >= 1 && bytes[position] <= 4 && bytes[position + 1] == 0 &&
                         bytes[position + 2] == 0 && bytes[position + 3] == 0;
    return isState ? Known(states[bytes[position] - 1]) : Unavailable(Reason::Unusable);
}

void AddState(const DeviceReading& device, DeviceFacts& facts)
{
    facts.answers[P::ProblemCode] = ProblemCodeOf(device);
    facts.answers[P::Problem] = ProblemOf(facts.answers[P::ProblemCode]);
    facts.answers[P::PowerState] = PowerStateOf(device.Of(D::PowerData));
    facts.isAsleep = TextOf(facts.answers[P::PowerState]) == "D3" && NumberOf(facts.answers[P::ProblemCode]) == 0;
}

// --- driver ---

/// NVIDIA's own version, of which the Windows version has the digits where the driver is NVIDIA's.
Answer NvidiaVersionOf(const Answer& version, const Answer& provider)
{
    if (!IsKnown(version) || !IsKnown(provider)) {
        return IsKnown(version) ? provider : version;
    }
    if (TextOf(provider) != "NVIDIA") {
        return Unavailable(Reason::OtherProvider);
    }
    const auto nvidiaVersion = NvidiaDriverVersion(TextOf(version));
    return nvidiaVersion ? Known(*nvidiaVersion) : Unavailable(Reason::Unusable);
}

void AddDriver(const DeviceReading& device, DeviceFacts& facts)
{
    facts.answers[P::DriverVersion] = PropertyText(device.Of(D::DriverVersion));
    facts.answers[P::DriverProvider] = PropertyText(device.Of(D::DriverProvider));
    facts.answers[P::DriverInf] = PropertyText(device.Of(D::DriverInfPath));
    facts.answers[P::DriverDate] = DateOf(device.Of(D::DriverDate), types::propertyFileTime);
    facts.answers[P::DriverVersionMarketing] =
        NvidiaVersionOf(facts.answers[P::DriverVersion], facts.answers[P::DriverProvider]);
}

} // namespace

DeviceFacts FactsOf(const DeviceReading& device)
{
    DeviceFacts facts;
    facts.answers[P::InstanceId] = InstanceIdAnswer(device);
    facts.instanceId = TextOf(facts.answers[P::InstanceId]);
    facts.enumerator = BusOf(device, facts.instanceId);
    AddIdentifiers(ReadIdentifiers(device, facts.instanceId, facts.identifiers), facts);

    facts.answers[P::Name] = PropertyText(device.Of(D::DeviceDesc));
    facts.answers[P::Service] = PropertyText(device.Of(D::Service));
    facts.answers[P::Kind] = KindOf(device, facts);
    facts.answers[P::Luid] = PropertyLongNumber(device.Of(D::Luid));
    facts.luid = NumberOf(facts.answers[P::Luid]);
    facts.physicalIndex = NumberOf(PropertyNumber(device.Of(D::PhysicalAdapterIndex)));
    facts.showsOtherCard = ShowsOtherCard(facts);

    AddPlace(device, facts);
    AddLink(device, facts);
    AddState(device, facts);
    AddDriver(device, facts);
    return facts;
}

std::vector<DeviceFacts> FactsOf(const std::vector<DeviceReading>& devices)
{
    std::vector<DeviceFacts> facts;
    facts.reserve(devices.size());
    for (const auto& device : devices) {
        facts.push_back(FactsOf(device));
    }
    return facts;
}

SourceAnswers KeyAnswers(const DriverKeyReading& key, std::optional<uint64_t> vendorId)
{
    if (key.error != 0) {
        return {ErrorAnswer(key.error), {}};
    }
    SourceAnswers source{Unavailable(Reason::Missing), {}};
    auto& answers = source.answers;
    answers[P::Name] = RegistryTextValue(key.Of(K::DriverDesc));
    answers[P::DriverVersion] = RegistryTextValue(key.Of(K::DriverVersion));
    answers[P::DriverProvider] = RegistryTextValue(key.Of(K::ProviderName));
    answers[P::DriverInf] = RegistryTextValue(key.Of(K::InfPath));
    answers[P::DriverDate] = DateOf(key.Of(K::DriverDateData), types::registryBinary);
    answers[P::DedicatedMemoryBytes] = RegistryMemorySize(key.Of(K::QwMemorySize));
    answers[P::BiosVersion] = RegistryTextValue(key.Of(K::BiosString), true);
    answers[P::DriverVersionMarketing] = vendorId == nvidiaVendorId
                                             ? NvidiaVersionOf(answers[P::DriverVersion], answers[P::DriverProvider])
                                             : RegistryTextValue(key.Of(K::RadeonSoftwareVersion));
    return source;
}

bool WouldWake(Source source, const std::vector<DeviceReading>& devices)
{
    return std::any_of(devices.begin(), devices.end(), [&](const DeviceReading& device) {
        const auto facts = FactsOf(device);
        return facts.isAsleep && DepthOf(source) == Depth::Drivers && facts.identifiers.vendor &&
               IsForVendor(P::BoardMemoryBytes, source, *facts.identifiers.vendor);
    });
}

} // namespace orvel::shared::inventory
