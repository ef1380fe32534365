#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "model/Value.h"

namespace orvel::shared::inventory {

/// The mode of a display's source.
struct SourceMode {
    uint32_t width = 0;
    uint32_t height = 0;
    int32_t x = 0;
    int32_t y = 0;
};

/// An active path from an adapter to a display.
struct DisplayPath {
    uint64_t luid = 0;      ///< of the adapter
    std::u16string gdiName; ///< empty where Windows does not give it
    uint32_t targetId = 0;  ///< distinguishes clones of one source
    std::u16string monitor; ///< name of the monitor; empty without one
    std::optional<SourceMode> mode;
    uint32_t refreshNumerator = 0;
    uint32_t refreshDenominator = 0;
    uint32_t outputTechnology = 0;
};

struct DisplayConfigReading {
    Answer end = Known(true); ///< otherwise why there are no paths
    std::vector<DisplayPath> paths;
};

/// Reads the active paths of the display configuration. May throw std::bad_alloc.
DisplayConfigReading ReadDisplayConfig();

} // namespace orvel::shared::inventory
