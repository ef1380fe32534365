#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "platform/Handles.h"

namespace orvel::shared::inventory {

/// Threads for one piece of work each. They keep this DLL loaded until they end, and may outlive this object.
class Threads {
public:
    /// Runs `work` on a thread of its own. What it throws is lost. Returns 0, or the Windows error that kept the thread from
    /// starting. Throws std::bad_alloc.
    uint32_t Start(std::function<void()> work);

    /// Waits until all have ended, or the time is over.
    void Await(uint32_t milliseconds) const;

private:
    using Thread = std::unique_ptr<void, enumeration::CloseWith<&::CloseHandle>>;

    std::vector<Thread> threads;
};

} // namespace orvel::shared::inventory
