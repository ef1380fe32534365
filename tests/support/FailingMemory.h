#pragma once

#include <cstddef>

namespace orvel::tests {

/// During its lifetime, makes one allocation of this thread fail with std::bad_alloc, after `successes` others have
/// succeeded; with `Until::End`, all later allocations fail too. Only allocations of the tests and of linked parts of the
/// product count.
class FailingMemory {
public:
    enum class Until { Next, End };

    FailingMemory(size_t successes, Until until);
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;
    ~FailingMemory();

    /// Whether an allocation has failed.
    static bool HasFailed();
};

} // namespace orvel::tests
