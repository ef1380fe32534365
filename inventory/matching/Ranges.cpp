#include "matching/Ranges.h"

#include <algorithm>
#include <iterator>

namespace orvel::shared::inventory {

namespace {

using P = Property;

struct Range {
    Property property;
    uint64_t lowest;
    uint64_t highest;
};

/// What a card can have, generously: whatever is outside of it was not written by a driver that works.
constexpr Range ranges[] = {
    {P::BoardMemoryBytes, 1, uint64_t{1} << 50},
    {P::MemoryBusWidthBits, 1, 65'536},
    {P::MemoryClockMaxMhz, 1, 1'000'000},
    {P::CoreClockMaxMhz, 1, 1'000'000},
    {P::CoreCount, 1, 10'000'000},
    {P::PcieGeneration, 1, 15}, // what the link's registers can hold
    {P::PcieGenerationMax, 1, 15},
    {P::PcieLanes, 1, 63},
    {P::PcieLanesMax, 1, 63},
    {P::TemperatureSlowdownCelsius, 1, 1000},
    {P::TemperatureShutdownCelsius, 1, 1000},
};

} // namespace

Answer InRange(Property property, const Answer& answer)
{
    const auto* const range =
        std::find_if(std::begin(ranges), std::end(ranges), [&](const Range& each) { return each.property == property; });
    const auto number = NumberOf(answer);
    const bool isUsable = !number || range == std::end(ranges) || (*number >= range->lowest && *number <= range->highest);
    return isUsable ? answer : Unavailable(Reason::Unusable);
}

} // namespace orvel::shared::inventory
