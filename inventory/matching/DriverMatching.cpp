#include "matching/DriverMatching.h"

#include <algorithm>
#include <iterator>

#include "matching/Ranges.h"

namespace orvel::shared::inventory {

namespace {

using P = Property;

/// How a card and a device of a driver relate, as far as their LUIDs or places say.
enum class Relation { Same, Perhaps, Different };

template <typename Number>
bool Differ(const std::optional<Number>& left, const std::optional<Number>& right)
{
    return left && right && *left != *right;
}

Relation Compare(const PciAddress& left, const PciAddress& right)
{
    if (Differ(left.segment, right.segment) || Differ(left.bus, right.bus) || Differ(left.device, right.device) ||
        Differ(left.function, right.function)) {
        return Relation::Different;
    }
    const bool isPlace = left.bus && right.bus && left.device && right.device;
    return isPlace ? Relation::Same : Relation::Perhaps;
}

Identifiers IdentifiersOf(const DriverDevice& device)
{
    return {device.vendorId, device.deviceId, device.subsystemId, device.revision};
}

class Matcher {
public:
    Matcher(const std::vector<CardKey>& cards, const std::vector<DriverDevice>& devices) : cards(cards), devices(devices)
    {
        for (const auto& card : cards) {
            cardIdentifiers.push_back(card.showsOtherCard ? Identifiers() : card.identifiers);
        }
        for (const auto& device : devices) {
            deviceIdentifiers.push_back(IdentifiersOf(device));
        }
    }

    DriverMatch Match(const CardKey& card) const
    {
        auto same = DevicesOf(card, Relation::Same);
        if (same.size() == 1 && IsOneCards(devices[same.front()])) {
            return {std::move(same), Reason::None};
        }
        if (!same.empty()) {
            return {{}, Reason::CannotTell};
        }
        return MatchByIdentifiers(card);
    }

    bool IsSomeCards(const DriverDevice& device) const
    {
        return std::any_of(cards.begin(), cards.end(),
                           [&](const CardKey& card) { return Relate(card, device) != Relation::Different; });
    }

private:
    DriverMatch MatchByIdentifiers(const CardKey& card) const
    {
        const auto candidates = DevicesOf(card, Relation::Perhaps);
        const auto isOthers = [&](std::size_t index) { return CardsOf(devices[index]) > 0; };
        if (std::all_of(candidates.begin(), candidates.end(), isOthers)) {
            return {{}, Reason::NotListed};
        }
        auto equal = GroupOf(card.identifiers, cardIdentifiers, deviceIdentifiers);
        if (equal.listed.size() != equal.cards.size()) {
            return {{}, Reason::CannotTell};
        }
        return {std::move(equal.listed), Reason::None};
    }

    Relation Relate(const CardKey& card, const DriverDevice& device) const
    {
        if (card.showsOtherCard || Differ(card.identifiers.vendor, device.vendorId) ||
            Differ(card.identifiers.device, device.deviceId) || Differ(card.luid, device.luid)) {
            return Relation::Different;
        }
        if (card.luid && device.luid && IsUnshared(*card.luid)) {
            return Relation::Same;
        }
        const auto relation = Compare(card.address, device.address);
        const bool isEqual = relation != Relation::Perhaps || Agree(card.identifiers, IdentifiersOf(device));
        return isEqual ? relation : Relation::Different;
    }

    /// Linked cards share a LUID.
    bool IsUnshared(uint64_t luid) const
    {
        const auto has = [luid](const auto& each) { return each.luid == luid; };
        return std::count_if(cards.begin(), cards.end(), has) == 1 &&
               std::count_if(devices.begin(), devices.end(), has) == 1;
    }

    Indexes DevicesOf(const CardKey& card, Relation relation) const
    {
        return Where(devices, [&](const DriverDevice& device) { return Relate(card, device) == relation; });
    }

    /// How many cards a device is.
    std::ptrdiff_t CardsOf(const DriverDevice& device) const
    {
        return std::count_if(cards.begin(), cards.end(),
                             [&](const CardKey& card) { return Relate(card, device) == Relation::Same; });
    }

    bool IsOneCards(const DriverDevice& device) const { return CardsOf(device) == 1; }

    const std::vector<CardKey>& cards;
    const std::vector<DriverDevice>& devices;
    std::vector<Identifiers> cardIdentifiers;
    std::vector<Identifiers> deviceIdentifiers;
};

std::map<Property, Answer> UsableAnswers(const DriverDevice& device)
{
    auto answers = device.answers;
    for (auto& [property, answer] : answers) {
        answer = InRange(property, answer);
    }
    return answers;
}

} // namespace

DriverMatches MatchDriver(const std::vector<CardKey>& cards, const std::vector<DriverDevice>& devices)
{
    const Matcher matcher(cards, devices);
    DriverMatches matches;
    for (const auto& card : cards) {
        matches.cards.push_back(matcher.Match(card));
    }
    matches.areAllMatched =
        std::all_of(devices.begin(), devices.end(), [&](const DriverDevice& device) { return matcher.IsSomeCards(device); });
    return matches;
}

SourceAnswers DriverAnswers(const DriverMatch& match, const std::vector<DriverDevice>& devices, const Answer& end)
{
    if (match.devices.empty()) {
        return {IsKnown(end) ? Unavailable(match.reason) : end, {}};
    }
    std::vector<std::map<Property, Answer>> all;
    std::transform(match.devices.begin(), match.devices.end(), std::back_inserter(all),
                   [&](std::size_t index) { return UsableAnswers(devices[index]); });
    return {Unavailable(Reason::Missing), CommonAnswers(all)};
}

} // namespace orvel::shared::inventory
