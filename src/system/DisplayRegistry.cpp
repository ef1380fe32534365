#include "system/DisplayRegistry.h"

#include "formulas/RegistryText.h"

namespace orvel::shared::enumeration {

namespace {

// Far more than any computer has. A link in the registry may lead back to a key above it: without an end such a search would
// take the whole stack, or as good as for ever.
constexpr size_t mostLevels = 32;
constexpr size_t mostKeys = 16384;

/// One search for the driver of an adapter.
class DriverSearch {
public:
    DriverSearch(const std::string& vendorId, const std::string& deviceId) : vendorId(vendorId), deviceId(deviceId) {}

    std::string BiosStringBelow(KnownKey& key, size_t level = 1);

private:
    const std::string& vendorId;
    const std::string& deviceId;
    size_t keysLeft = mostKeys;
};

std::string DriverSearch::BiosStringBelow(KnownKey& key, size_t level)
{
    for (size_t index = 0; level <= mostLevels && keysLeft > 0; ++index) {
        --keysLeft;
        KnownKey* const subkey = key.Subkey(index);
        if (!subkey) {
            break;
        }
        if (IsMatchingDevice(subkey->Text(L"MatchingDeviceId"), vendorId, deviceId)) {
            return subkey->Text(L"HardwareInformation.BiosString");
        }
        if (std::string found = BiosStringBelow(*subkey, level + 1); !found.empty()) {
            return found;
        }
    }
    return {};
}

} // namespace

std::string GetBiosString(const std::string& vendorId, const std::string& deviceId, AdapterRegistry& registry)
{
    if (!registry.Video) {
        registry.Video = KnownKey::OfMachine(L"SYSTEM\\CurrentControlSet\\Control\\Video");
    }
    return DriverSearch(vendorId, deviceId).BiosStringBelow(*registry.Video);
}

std::string GetBiosString(const std::string& vendorId, const std::string& deviceId)
{
    AdapterRegistry registry;
    return GetBiosString(vendorId, deviceId, registry);
}

} // namespace orvel::shared::enumeration
