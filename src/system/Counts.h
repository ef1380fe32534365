#pragma once

#include <cstddef>
#include <cstdint>
#include <new>

namespace orvel::shared::enumeration {

/// The number of objects that a driver has told, for a list of them; throws std::bad_alloc for a number that no computer
/// has. A broken driver's count is often -1 or uninitialised memory, and a list of that length would take tens of gigabytes:
/// where the memory is there, the host would be stopped for minutes before the list turned out to be empty.
inline std::size_t BelievableCount(uint32_t count)
{
    constexpr uint32_t most = 65536;
    if (count > most) {
        throw std::bad_alloc();
    }
    return count;
}

} // namespace orvel::shared::enumeration
