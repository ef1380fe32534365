#pragma once

#include <cstdint>
#include <optional>

namespace orvel::simulation {

/// A status that a machine file sets for a call; 0 (success everywhere) unless it does.
struct Status {
    int32_t code = 0;
};

/// What a machine file lets one call answer: a value, a failure, or a failure that writes a value all the same.
template <typename Value>
struct Answer {
    bool given = false; // the file has the key
    int32_t status = 0;
    std::optional<Value> value; // none: the call writes nothing

    /// The status of the call; `write` receives the value if there is one to write. A call that the file does not describe
    /// answers `notSupported`.
    template <typename Write>
    int32_t Give(int32_t notSupported, Write&& write) const
    {
        if (!given)
            return notSupported;
        if (value)
            write(*value);
        return status;
    }
};

} // namespace orvel::simulation
