#include "matching/AdapterMatching.h"

#include <algorithm>
#include <iterator>

#include "matching/EqualGroups.h"

namespace orvel::shared::inventory {

namespace {

Identifiers IdentifiersOf(const DeviceFacts& device)
{
    return device.identifiers;
}

template <typename Item>
std::vector<Identifiers> AllIdentifiers(const std::vector<Item>& items)
{
    std::vector<Identifiers> all;
    std::transform(items.begin(), items.end(), std::back_inserter(all),
                   [](const Item& item) { return IdentifiersOf(item); });
    return all;
}

class Matcher {
public:
    Matcher(const std::vector<DeviceFacts>& devices, const std::vector<DxgiAdapter>& adapters)
        : devices(devices),
          adapters(adapters),
          deviceIdentifiers(AllIdentifiers(devices)),
          adapterIdentifiers(AllIdentifiers(adapters))
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
        auto equal = GroupOf(device.identifiers, deviceIdentifiers, adapterIdentifiers);
        const auto isOthers = [&](std::size_t index) { return IsSomeDevicesLuid(adapters[index]); };
        if (std::all_of(equal.listed.begin(), equal.listed.end(), isOthers)) {
            return {{}, Reason::NotListed};
        }
        if (equal.listed.size() != equal.cards.size()) {
            return {{}, Reason::CannotTell};
        }
        return {std::move(equal.listed), Reason::None};
    }

    bool IsSomeDevicesLuid(const DxgiAdapter& adapter) const
    {
        return std::any_of(devices.begin(), devices.end(),
                           [&](const DeviceFacts& device) { return device.luid == adapter.luid; });
    }

    const std::vector<DeviceFacts>& devices;
    const std::vector<DxgiAdapter>& adapters;
    std::vector<Identifiers> deviceIdentifiers;
    std::vector<Identifiers> adapterIdentifiers;
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
