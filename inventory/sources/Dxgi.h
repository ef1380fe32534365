#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "model/Value.h"

namespace orvel::shared::inventory {

/// An adapter as DXGI describes it (DXGI_ADAPTER_DESC1).
struct DxgiAdapter {
    std::u16string description;
    uint32_t vendorId = 0;
    uint32_t deviceId = 0;
    uint32_t subsystemId = 0;
    uint32_t revision = 0;
    uint64_t dedicatedVideoMemoryBytes = 0;
    uint64_t dedicatedSystemMemoryBytes = 0;
    uint64_t sharedSystemMemoryBytes = 0;
    uint64_t luid = 0;
    uint32_t flags = 0; ///< 1: remote, 2: software
};

struct DxgiReading {
    Answer end = Known(true); ///< otherwise why the listing is not complete
    std::vector<DxgiAdapter> adapters;
};

/// Lists DXGI's adapters. May throw std::bad_alloc.
DxgiReading ReadDxgi();

} // namespace orvel::shared::inventory
