#pragma once

#include <cstdint>
#include <map>

#include "model/Value.h"

namespace orvel::shared::inventory {

struct DxCoreReading {
    Answer end = Known(true);            ///< otherwise why the listing is not complete
    std::map<uint64_t, Answer> adapters; ///< by LUID: whether the adapter is integrated
};

/// Lists DXCore's adapters, which Windows has since Windows 10 version 2004. May throw std::bad_alloc.
DxCoreReading ReadDxCore();

} // namespace orvel::shared::inventory
