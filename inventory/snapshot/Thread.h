#pragma once

#include <cstdint>
#include <functional>

namespace orvel::shared::inventory {

/// Runs `work` on a thread of its own, which keeps this DLL loaded until it ends. Nobody waits for the thread. What `work`
/// throws is lost. Returns 0, or the Windows error that kept the thread from starting. Throws std::bad_alloc.
uint32_t StartThread(std::function<void()> work);

} // namespace orvel::shared::inventory
