#include "matching/AdapterMatching.h"

#include <algorithm>

namespace orvel::shared::inventory {

namespace {

using Indexes = std::vector<std::size_t>;

/// Indexes of the items that a condition holds for.
template <typename Item, typename Condition>
Indexes Where(const std::vector<Item>& items, Condition condition)
{
    Indexes indexes;
    for (std::size_t index = 0; index < items.size(); ++index) {
        if (condition(items[index])) {
            indexes.push_back(index);
        }
    }
    return indexes;
}

class Matcher {
public:
    Matcher(const std::vector<DeviceFacts>& devices, const std::vector<DxgiAdapter>& adapters)
        : devices(devices), adapters(adapters)
    {}

    AdapterMatch Match(const DeviceFacts& device) const
    {
        return device.luid ? MatchByLuid(device) : MatchByIdentifiers(device);
    }

    bool IsOwnCard(const DxgiAdapter& adapter, bool areAllDevicesListed) const
    {
        return !IsSomeDevicesLuid(adapter) && std::none_of(devices.begin(), devices.end(), [&](const DeviceFacts& device) {
            return (areAllDevicesListed || !device.luid) && Agree(device.identifiers, IdentifiersOf(adapter));
        });
    }

private:
    AdapterMatch MatchByLuid(const DeviceFacts& device) const
    {
        if (!IsFirstOfLuid(device, devices)) {
            return {{}, Reason::Linked};
        }
        auto found = Where(adapters, [&](const DxgiAdapter& adapter) { return adapter.luid == device.luid; });
        const auto reason = found.empty() ? Reason::NotListed : Reason::None;
        return {std::move(found), reason};
    }

    AdapterMatch MatchByIdentifiers(const DeviceFacts& device) const
    {
        Indexes equalDevices, equalAdapters = AdaptersLike(device.identifiers);
        // Devices do not all have the same identifiers: one that lacks some agrees with more adapters than the others.
        for (std::size_t known = 0; known != equalAdapters.size();) {
            known = equalAdapters.size();
            equalDevices = DevicesLike(equalAdapters);
            equalAdapters = AdaptersLike(equalDevices);
        }
        const auto isOthers = [&](std::size_t index) { return IsSomeDevicesLuid(adapters[index]); };
        if (std::all_of(equalAdapters.begin(), equalAdapters.end(), isOthers)) {
            return {{}, Reason::NotListed};
        }
        if (equalAdapters.size() != equalDevices.size()) {
            return {{}, Reason::CannotTell};
        }
        return {std::move(equalAdapters), Reason::None};
    }

    Indexes AdaptersLike(const Identifiers& identifiers) const
    {
        return Where(adapters, [&](const DxgiAdapter& each) { return Agree(identifiers, IdentifiersOf(each)); });
    }

    Indexes AdaptersLike(const Indexes& some) const
    {
        return Where(adapters, [&](const DxgiAdapter& adapter) {
            return std::any_of(some.begin(), some.end(),
                               [&](std::size_t index) { return Agree(devices[index].identifiers, IdentifiersOf(adapter)); });
        });
    }

    Indexes DevicesLike(const Indexes& some) const
    {
        return Where(devices, [&](const DeviceFacts& device) {
            return std::any_of(some.begin(), some.end(),
                               [&](std::size_t index) { return Agree(device.identifiers, IdentifiersOf(adapters[index])); });
        });
    }

    bool IsSomeDevicesLuid(const DxgiAdapter& adapter) const
    {
        return std::any_of(devices.begin(), devices.end(),
                           [&](const DeviceFacts& device) { return device.luid == adapter.luid; });
    }

    const std::vector<DeviceFacts>& devices;
    const std::vector<DxgiAdapter>& adapters;
};

} // namespace

Identifiers IdentifiersOf(const DxgiAdapter& adapter)
{
    return {adapter.vendorId, adapter.deviceId, adapter.subsystemId, adapter.revision};
}

bool IsFirstOfLuid(const DeviceFacts& device, const std::vector<DeviceFacts>& devices)
{
    const auto sharing = Where(devices, [&](const DeviceFacts& each) { return each.luid && each.luid == device.luid; });
    const auto first = Where(
        devices, [&](const DeviceFacts& each) { return each.luid && each.luid == device.luid && each.physicalIndex == 0; });
    return sharing.size() <= 1 || (first.size() == 1 && device.physicalIndex == 0);
}

AdapterMatches MatchAdapters(const std::vector<DeviceFacts>& devices, const std::vector<DxgiAdapter>& adapters,
                             bool areAllDevicesListed)
{
    const Matcher matcher(devices, adapters);
    AdapterMatches matches;
    for (const auto& device : devices) {
        matches.devices.push_back(matcher.Match(device));
    }
    matches.ownAdapters =
        Where(adapters, [&](const DxgiAdapter& adapter) { return matcher.IsOwnCard(adapter, areAllDevicesListed); });
    return matches;
}

} // namespace orvel::shared::inventory
