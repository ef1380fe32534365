#include "system/DisplayRegistry.h"

namespace orvel::shared::enumeration {

namespace {

// Far more than any computer has. A registry link can refer to one of its own parent keys: without limits such a search
// would exhaust the stack, or practically never end.
constexpr size_t mostLevels = 32;
constexpr size_t mostKeys = 16384;

/// One search for the driver of an adapter.
class DriverSearch {
public:
    explicit DriverSearch(const PnpDeviceId& adapter) : adapter(adapter) {}

    std::string BiosStringBelow(KnownKey& key, size_t level = 1);

private:
    const PnpDeviceId& adapter;
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
        if (IsMatchingDevice(subkey->Text(L"MatchingDeviceId"), adapter)) {
            return subkey->Text(L"HardwareInformation.BiosString");
        }
        if (std::string found = BiosStringBelow(*subkey, level + 1); !found.empty()) {
            return found;
        }
    }
    return {};
}

} // namespace

std::string GetBiosString(const PnpDeviceId& adapter, AdapterRegistry& registry)
{
    if (!registry.Video) {
        registry.Video = KnownKey::OfMachine(L"SYSTEM\\CurrentControlSet\\Control\\Video");
    }
    return DriverSearch(adapter).BiosStringBelow(*registry.Video);
}

} // namespace orvel::shared::enumeration
