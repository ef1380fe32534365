#pragma once

#include <cstddef>

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

} // namespace orvel::tests
