#pragma once

#include <optional>
#include <vector>

#include "matching/EqualGroups.h"
#include "sources/DriverReading.h"

namespace orvel::shared::inventory {

/// What a card is matched by.
struct CardKey {
    std::optional<uint64_t> luid;
    PciAddress address;
    Identifiers identifiers;
    bool showsOtherCard = false; ///< no driver lists it
};

/// The devices of a driver that a card may be.
struct DriverMatch {
    Indexes devices; ///< one, or as many as there are equal cards; empty for `reason`
    Reason reason = Reason::None;
};

struct DriverMatches {
    std::vector<DriverMatch> cards; ///< one for each card
    bool areAllMatched = true;      ///< otherwise the driver lists a device that is not one of the cards
};

/// Finds out which device of a driver is which card. A device belongs to the card with its LUID, unless several share it,
/// else to the card at its place on PCI. Where one of the two does not know its LUID and its place, their identifiers are
/// compared, with those of all cards and devices: a card has a device if there is one of each, and may be any of the devices
/// if there are as many of them as cards. Vendor and device never differ.
///
/// Nothing depends on the order of cards and devices.
DriverMatches MatchDriver(const std::vector<CardKey>& cards, const std::vector<DriverDevice>& devices);

/// What a driver says about a card. `end` is how its listing has ended: it is the reason for a card without a device. A
/// number that no card can have is unusable.
SourceAnswers DriverAnswers(const DriverMatch& match, const std::vector<DriverDevice>& devices, const Answer& end);

} // namespace orvel::shared::inventory
