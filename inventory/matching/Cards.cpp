#include "matching/Cards.h"

#include <algorithm>
#include <tuple>

#include "matching/AdapterAnswers.h"
#include "matching/AdapterMatching.h"
#include "matching/DeviceFacts.h"
#include "matching/DriverMatching.h"
#include "model/Names.h"

namespace orvel::shared::inventory {

namespace {

using P = Property;

/// Cards are sorted by it: PCI cards, other devices, DXGI's own; then by their numbers; then by text.
using Place = std::tuple<int, std::vector<uint64_t>, std::string>;

struct PlacedCard {
    Place place;
    Card card;
};

bool IsPresent(const Answer& answer)
{
    return answer.reason != Reason::NotPresent;
}

std::vector<Source> SourcesFor(Property property, std::optional<uint64_t> vendorId)
{
    std::vector<Source> sources;
    for (const Source source : RowOf(property).sources) {
        if (vendorId ? IsForVendor(property, source, *vendorId) : IsForAnyVendor(property, source)) {
            sources.push_back(source);
        }
    }
    return sources;
}

SourceAnswers& At(AnswersBySource& sources, Source source)
{
    return sources[static_cast<std::size_t>(source)];
}

/// What one has to say who has only the end of a source.
Answer EndOr(const Answer& end, const Answer& otherwise)
{
    return IsKnown(end) ? otherwise : end;
}

AnswersBySource EndsOf(const Readings& readings)
{
    AnswersBySource sources;
    for (std::size_t source = 0; source < sourceCount; ++source) {
        sources[source].otherwise = EndOr(readings.ends[source], Unavailable(Reason::Missing));
    }
    return sources;
}

/// Adds what is matched by the card's LUID alone. `reason` keeps a card from it: None for most.
void AddByLuid(const Readings& readings, Reason reason, bool showsOtherCard, AnswersBySource& sources)
{
    const auto luid = NumberOf(Resolve(P::Luid, {}, sources));
    const auto otherwise = Unavailable(luid ? reason : Reason::NoLuid);
    const bool isMatched = luid && reason == Reason::None;

    auto& displays = At(sources, Source::DisplayConfig);
    const auto& displaysEnd = readings.End(Source::DisplayConfig);
    displays.answers[P::Displays] = EndOr(displaysEnd, isMatched ? Known(DisplaysOf(*luid, readings.paths)) : otherwise);

    auto& dxCore = At(sources, Source::DxCore).answers[P::Integrated];
    const auto& dxCoreEnd = readings.End(Source::DxCore);
    if (showsOtherCard) {
        dxCore = EndOr(dxCoreEnd, Unavailable(Reason::BelongsToOther));
    } else if (const auto entry = readings.integrated.find(luid.value_or(0));
               isMatched && entry != readings.integrated.end()) {
        dxCore = entry->second;
    } else {
        dxCore = EndOr(dxCoreEnd, isMatched ? Unavailable(Reason::NotListed) : otherwise);
    }
}

/// The name that belongs to a vendor's number.
Value VendorOf(const Value& vendorId)
{
    const auto number = NumberOf(vendorId);
    if (!number) {
        return vendorId;
    }
    const auto* name = VendorName(*number);
    return {name ? Known(name) : Unavailable(Reason::NotInTable), vendorId.source};
}

Card ResolveAll(const AnswersBySource& sources)
{
    const auto vendorId = Resolve(P::VendorId, {}, sources);
    Card card;
    for (std::size_t property = 0; property < propertyCount; ++property) {
        card.values.push_back(Resolve(static_cast<Property>(property), NumberOf(vendorId), sources));
    }
    card.values[static_cast<std::size_t>(P::Vendor)] = VendorOf(vendorId);
    return card;
}

Place PlaceOf(const DeviceFacts& device, const Card& card)
{
    std::vector<uint64_t> address;
    for (const auto property : {P::PciSegment, P::PciBus, P::PciDevice, P::PciFunction}) {
        if (const auto number = NumberOf(card.Of(property))) {
            address.push_back(*number);
        }
    }
    if (address.size() == 4) {
        return {0, address, device.instanceId};
    }
    return {1, {}, device.instanceId};
}

Place PlaceOf(const DxgiAdapter& adapter)
{
    return {2, {adapter.vendorId, adapter.deviceId, adapter.subsystemId, adapter.revision, adapter.luid}, ""};
}

// --- what is matched ---

/// The devices and DXGI's own adapters are the cards, in this order.
struct Matches {
    std::vector<DeviceFacts> devices;
    AdapterMatches adapters;
    std::map<Source, DriverMatches> drivers;
};

std::optional<uint64_t> NumberIn(const DeviceFacts& device, Property property)
{
    const auto entry = device.answers.find(property);
    return entry == device.answers.end() ? std::nullopt : NumberOf(entry->second);
}

CardKey KeyOf(const DeviceFacts& device)
{
    const PciAddress address{NumberIn(device, P::PciSegment), NumberIn(device, P::PciBus), NumberIn(device, P::PciDevice),
                             NumberIn(device, P::PciFunction)};
    return {device.luid, address, device.identifiers, device.showsOtherCard};
}

CardKey KeyOf(const DxgiAdapter& adapter)
{
    return {adapter.luid, {}, IdentifiersOf(adapter), IsRemote(adapter)};
}

std::vector<CardKey> KeysOf(const Matches& matches, const std::vector<DxgiAdapter>& adapters)
{
    std::vector<CardKey> keys;
    for (const auto& device : matches.devices) {
        keys.push_back(KeyOf(device));
    }
    for (const auto index : matches.adapters.ownAdapters) {
        keys.push_back(KeyOf(adapters[index]));
    }
    return keys;
}

Matches MatchAll(const Readings& readings)
{
    Matches matches;
    matches.devices = FactsOf(readings.devices);
    matches.adapters = MatchAdapters(matches.devices, readings.adapters, IsKnown(readings.End(Source::SetupApi)));
    const auto keys = KeysOf(matches, readings.adapters);
    for (const auto& [source, devices] : readings.driverDevices) {
        matches.drivers[source] = MatchDriver(keys, devices);
    }
    return matches;
}

/// Adds what the vendors' drivers say about a card of a number.
void AddDrivers(const Readings& readings, const Matches& matches, std::size_t card, AnswersBySource& sources)
{
    for (const auto& [source, driver] : matches.drivers) {
        At(sources, source) = DriverAnswers(driver.cards[card], readings.driverDevices.at(source), readings.End(source));
    }
}

// --- cards ---

PlacedCard DeviceCard(const Readings& readings, const Matches& matches, std::size_t index)
{
    const auto& device = matches.devices[index];
    auto sources = EndsOf(readings);
    At(sources, Source::SetupApi) = {Unavailable(Reason::Missing), device.answers};
    At(sources, Source::Dxgi) =
        DxgiAnswers(device, matches.adapters.devices[index], readings.adapters, readings.End(Source::Dxgi));
    if (index < readings.driverKeys.size()) {
        const auto vendorId = NumberOf(Resolve(P::VendorId, {}, sources));
        At(sources, Source::DriverKey) = KeyAnswers(readings.driverKeys[index], vendorId);
    }
    const auto reason = IsFirstOfLuid(device, matches.devices) ? Reason::None : Reason::Linked;
    AddByLuid(readings, reason, device.showsOtherCard, sources);
    AddDrivers(readings, matches, index, sources);
    auto card = ResolveAll(sources);
    return {PlaceOf(device, card), std::move(card)};
}

/// The card of an adapter without a device, by its number among those.
PlacedCard AdapterCard(const Readings& readings, const Matches& matches, std::size_t number)
{
    const auto& adapter = readings.adapters[matches.adapters.ownAdapters[number]];
    auto sources = EndsOf(readings);
    const auto noDevice = EndOr(readings.End(Source::SetupApi), Unavailable(Reason::NoDevice));
    At(sources, Source::SetupApi) = {noDevice, {}};
    At(sources, Source::DriverKey) = {noDevice, {}};
    At(sources, Source::Dxgi) = DxgiAnswers(adapter);
    AddByLuid(readings, Reason::None, IsRemote(adapter), sources);
    AddDrivers(readings, matches, matches.devices.size() + number, sources);
    return {PlaceOf(adapter), ResolveAll(sources)};
}

} // namespace

Value Resolve(Property property, std::optional<uint64_t> vendorId, const AnswersBySource& sources)
{
    const auto candidates = SourcesFor(property, vendorId);
    if (candidates.empty()) {
        return {vendorId ? Unsupported(Reason::NoSource) : Unavailable(Reason::VendorUnknown), {}};
    }
    const auto answerOf = [&](Source source) -> const Answer& {
        return sources[static_cast<std::size_t>(source)].Of(property);
    };
    const auto first = [&](auto condition) {
        return std::find_if(candidates.begin(), candidates.end(),
                            [&](Source source) { return condition(answerOf(source)); });
    };
    auto deciding = first(IsKnown);
    if (deciding == candidates.end()) {
        deciding = first([](const Answer& answer) { return answer.status == Status::NotAsked; });
    }
    if (deciding == candidates.end()) {
        deciding = first(IsPresent);
    }
    if (deciding == candidates.end()) {
        deciding = candidates.begin();
    }
    return {answerOf(*deciding), *deciding};
}

std::vector<Card> CardsOf(const Readings& readings)
{
    const auto matches = MatchAll(readings);
    std::vector<PlacedCard> placed;
    for (std::size_t index = 0; index < matches.devices.size(); ++index) {
        placed.push_back(DeviceCard(readings, matches, index));
    }
    for (std::size_t number = 0; number < matches.adapters.ownAdapters.size(); ++number) {
        placed.push_back(AdapterCard(readings, matches, number));
    }
    std::stable_sort(placed.begin(), placed.end(),
                     [](const PlacedCard& left, const PlacedCard& right) { return left.place < right.place; });
    std::vector<Card> cards;
    cards.reserve(placed.size());
    for (auto& each : placed) {
        cards.push_back(std::move(each.card));
    }
    return cards;
}

std::vector<SourceReport> ReportsOf(const Readings& readings)
{
    const auto matches = MatchAll(readings);
    std::vector<SourceReport> reports;
    for (std::size_t index = 0; index < sourceCount; ++index) {
        const auto source = static_cast<Source>(index);
        SourceReport report{source, readings.End(source)};
        const auto driver = matches.drivers.find(source);
        if (IsKnown(report.end) && driver != matches.drivers.end() && !driver->second.areAllMatched) {
            report.end.reason = Reason::ExtraDevice;
        }
        reports.push_back(std::move(report));
    }
    return reports;
}

} // namespace orvel::shared::inventory
