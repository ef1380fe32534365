#pragma once

#include <array>
#include <optional>
#include <vector>

#include "machine/Bytes.h"
#include "machine/Node.h"

namespace orvel::simulation {

struct SourceModeModel {
    uint32_t width = 0;
    uint32_t height = 0;
    int32_t x = 0;
    int32_t y = 0;
};

/// An active path from an adapter to a display.
struct DisplayPathModel {
    uint64_t adapterId = 0; // the adapter's LUID
    uint32_t sourceId = 0;
    uint32_t targetId = 0;
    std::optional<SourceModeModel> sourceMode;
    std::array<uint32_t, 2> refreshRate{}; // numerator, denominator
    int32_t outputTechnology = 0;
    Answer<WideText> viewGdiDeviceName;
    Answer<WideText> monitorFriendlyDeviceName;
};

struct DisplaysModel {
    Status bufferSizes;
    Status query;
    std::vector<DisplayPathModel> paths;
};

void ReadInto(const Node& node, DisplaysModel& target);

} // namespace orvel::simulation
