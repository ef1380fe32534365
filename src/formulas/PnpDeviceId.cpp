#include "formulas/PnpDeviceId.h"

#include <stdexcept>

#include "formulas/RunFailure.h"

namespace orvel::shared::enumeration {

std::string Cut(const std::string& text, std::size_t position, std::size_t count)
{
    if (position > text.size()) {
        throw std::out_of_range(MessageOf(RunFailure::TextTooShort));
    }
    return text.substr(position, count);
}

PnpDeviceId ParsePnpDeviceId(const std::string& text)
{
    return {Cut(text, 8, 4), Cut(text, 17, 4), SubsystemOf(text)};
}

std::string SubsystemOf(const std::string& text)
{
    // The vendor half is last in the text: cutting it first rejects a text that is too short.
    const std::string vendor = Cut(text, 33, 4);
    return Cut(text, 29, 4) + "-" + vendor;
}

bool IsMatchingDevice(const std::string& matchingDeviceId, const PnpDeviceId& adapter)
{
    return matchingDeviceId.size() >= 21 && matchingDeviceId.compare(8, 4, adapter.Vendor) == 0 &&
           matchingDeviceId.compare(17, 4, adapter.Device) == 0;
}

} // namespace orvel::shared::enumeration
