#pragma once

#include <cstdint>

namespace orvel::shared::enumeration {

/// Whether a computer can have as many objects as a driver reports. A broken driver's count is often -1 or uninitialised
/// memory, and a list of that length would take tens of gigabytes: where the memory is there, the host would be stopped for
/// minutes before the list turned out to be empty.
constexpr bool IsBelievable(uint32_t count)
{
    return count <= 65536;
}

} // namespace orvel::shared::enumeration
