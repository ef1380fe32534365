#pragma once

#include <cstddef>
#include <vector>

#include "matching/DeviceFacts.h"
#include "sources/Dxgi.h"

namespace orvel::shared::inventory {

/// The DXGI adapters that a device may be.
struct AdapterMatch {
    std::vector<std::size_t> adapters; ///< one, or as many as there are equal devices; empty for `reason`
    Reason reason = Reason::None;
};

struct AdapterMatches {
    std::vector<AdapterMatch> devices;    ///< one for each device
    std::vector<std::size_t> ownAdapters; ///< adapters that are no device's: cards of their own
};

/// Finds out which DXGI adapter is which device. An adapter belongs to the device with its LUID. A device without one is
/// compared by its identifiers, with all devices and adapters of the same: it is an adapter's if there is one of each, and
/// may be any of the adapters if there are as many of them as devices. An adapter that no device agrees with is a card of
/// its own; where not all devices could be listed, so is one that only devices with other LUIDs agree with.
///
/// Nothing depends on the order of devices and adapters.
AdapterMatches MatchAdapters(const std::vector<DeviceFacts>& devices, const std::vector<DxgiAdapter>& adapters,
                             bool areAllDevicesListed);

/// Whether, among the cards that share its LUID, a device is the one that gets what belongs to the LUID.
bool IsFirstOfLuid(const DeviceFacts& device, const std::vector<DeviceFacts>& devices);

Identifiers IdentifiersOf(const DxgiAdapter& adapter);

} // namespace orvel::shared::inventory
