#pragma once

#include <cstdint>

namespace orvel::shared::enumeration {

/// Whether a computer can have as many objects as a driver reports. A broken driver's count is often -1 or uninitialised
/// memory, and a list of that length would take tens of gigabytes and block the host for minutes.
constexpr bool IsBelievable(uint32_t count)
{
    return count <= 65536;
}

} // namespace orvel::shared::enumeration
