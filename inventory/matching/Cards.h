#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <vector>

#include "model/Value.h"
#include "sources/DisplayConfig.h"
#include "sources/DriverReading.h"
#include "sources/Dxgi.h"
#include "sources/SetupApi.h"

namespace orvel::shared::inventory {

/// What all sources have read. A source that has not answered has read nothing; one that was refused in the middle of its
/// list may have read something.
struct Readings {
    std::vector<DeviceReading> devices;
    DriverKeysReading driverKeys;
    std::vector<DxgiAdapter> adapters;
    std::map<uint64_t, Answer> integrated; ///< by LUID
    std::vector<DisplayPath> paths;
    std::map<Source, std::vector<DriverDevice>> driverDevices;
    std::array<Answer, sourceCount> ends; ///< by source: Known where it has answered

    Answer& End(Source source) { return ends[static_cast<std::size_t>(source)]; }
    const Answer& End(Source source) const { return ends[static_cast<std::size_t>(source)]; }
};

/// The value of a property: the first known answer in the order of the table. Without one it is not asked where a source was
/// left out, else it is as the first source says that is on this computer.
Value Resolve(Property property, std::optional<uint64_t> vendorId, const AnswersBySource& sources);

/// The cards: PCI cards by their place, then the other devices by their instance id, then what only DXGI has. The same
/// whatever the order in which the sources list things.
std::vector<Card> CardsOf(const Readings& readings);

/// How asking each source has ended. A vendor's driver that has answered, but lists a device that is not one of the cards,
/// says so: the device is ignored.
std::vector<SourceReport> ReportsOf(const Readings& readings);

} // namespace orvel::shared::inventory
