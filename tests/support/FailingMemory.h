#pragma once

#include <cstddef>

namespace orvel::tests {

/// Lets an allocation of this thread fail with std::bad_alloc, as long as it lives: the one that `successes` others precede,
/// and with `Until::End` all later ones too. Counts what the tests and the parts of the product linked into them allocate.
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
