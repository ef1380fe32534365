#pragma once

#include <cstddef>
#include <functional>

namespace orvel::tests {

/// The system resources that this process holds.
struct HeldResources {
    size_t Handles = 0;
    size_t Modules = 0;
    size_t TlsIndexes = 0;   ///< of thread-local storage
    size_t HeapBytes = 0;    ///< allocated from the process's heaps
    size_t PrivateBytes = 0; ///< committed memory that the process does not share
};

/// Counted from the system's own tables: GetProcessHandleCount and GetProcessMemoryInfo do not work under Wine.
HeldResources HeldNow();

/// How many bytes the heaps hold more after some work than before. While it is more than `limit`, the work is repeated, up
/// to 10 times: a leak grows each time, but what a heap sets aside for sizes that are often allocated does not.
long long HeapGrowth(long long limit, const std::function<void()>& work);

} // namespace orvel::tests
