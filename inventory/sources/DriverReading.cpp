#include "sources/DriverReading.h"

#include <algorithm>
#include <string>

namespace orvel::shared::inventory {

Answer DriverAnswer(std::optional<int32_t> status, int32_t notSupported, const Answer& value)
{
    if (!status) {
        return Unavailable(Reason::NotPresent);
    }
    if (*status == notSupported) {
        return Unsupported(Reason::NotSupported);
    }
    return *status == 0 ? value : Failed(*status);
}

Answer DriverText(const char* buffer, std::size_t size)
{
    const auto* const end = std::find(buffer, buffer + size, '\0');
    const auto isPrintable = [](char each) { return each >= ' ' && each <= '~'; };
    if (end == buffer + size || !std::all_of(buffer, end, isPrintable)) {
        return Unavailable(Reason::Unusable);
    }
    return end == buffer ? Unavailable(Reason::Missing) : Known(std::string(buffer, end));
}

std::optional<uint32_t> KnownIdentifier(uint32_t number)
{
    return number == 0 ? std::nullopt : std::optional(number);
}

} // namespace orvel::shared::inventory
