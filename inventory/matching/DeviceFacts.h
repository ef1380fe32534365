#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "matching/Identifiers.h"
#include "model/Value.h"
#include "sources/SetupApi.h"

namespace orvel::shared::inventory {

/// What SetupAPI's reading of a device says about a card, and what the card is matched by.
struct DeviceFacts {
    std::map<Property, Answer> answers;
    std::string instanceId; ///< "" where it could not be read
    std::string enumerator; ///< such as "PCI"; "" where it is not known
    Identifiers identifiers;
    std::optional<uint64_t> luid;
    std::optional<uint64_t> physicalIndex; ///< among linked cards, which share a LUID
    bool showsOtherCard = false;           ///< DXGI shows the card that renders in its place
    bool isAsleep = false;
};

DeviceFacts FactsOf(const DeviceReading& device);

std::vector<DeviceFacts> FactsOf(const std::vector<DeviceReading>& devices);

/// What the driver key of a device says about a card of a vendor, which need not be known.
SourceAnswers KeyAnswers(const DriverKeyReading& key, std::optional<uint64_t> vendorId);

/// Whether loading a driver's source would wake a card.
bool WouldWake(Source source, const std::vector<DeviceReading>& devices);

} // namespace orvel::shared::inventory
