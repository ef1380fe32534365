#pragma once

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <optional>

#include "trace/Graveyard.h"

namespace orvel::simulation {

/// The status that a machine file sets for a call; default 0, which every interface uses for success.
struct Status {
    bool given = false; // the file has the key
    int32_t code = 0;
};

/// What a call writes to the caller's memory. A machine file can make it misbehave.
enum class Writes {
    AsUsual,
    Nothing,      // also on success
    Rubbish,      // also on failure; for a pointer, a dangling one
    Unterminated, // a text without its terminator
};

/// The status of a call that returns objects or handles.
struct OutputStatus : Status {
    Writes writes = Writes::AsUsual;
};

/// The caller's memory that a call may write to.
struct Area {
    void* start;
    size_t bytes;
};

inline void FillWithRubbish(std::initializer_list<Area> areas)
{
    for (const Area& area : areas) {
        std::memset(area.start, rubbishByte, area.bytes);
    }
}

/// The answer of one call in a machine file: a value, a failure, or a failure that still writes a value.
template <typename Value>
struct Answer {
    bool given = false; // the file has the key
    int32_t status = 0;
    std::optional<Value> value; // none: the call writes nothing
    Writes writes = Writes::AsUsual;

    /// The status of the call; `write` receives the value if there is one to write. `areas` is all that the call may write
    /// to. A call that the file does not describe returns `notSupported`.
    template <typename Write>
    int32_t Give(int32_t notSupported, std::initializer_list<Area> areas, Write&& write) const
    {
        if (!given) {
            return notSupported;
        }
        if (writes == Writes::Rubbish) {
            FillWithRubbish(areas);
        } else if (value && writes != Writes::Nothing) {
            write(*value);
        }
        return status;
    }

    /// The same for a call that writes only the value.
    int32_t GiveTo(Value* target, int32_t notSupported) const
    {
        return Give(notSupported, {{target, sizeof *target}}, [target](const Value& written) { *target = written; });
    }
};

} // namespace orvel::simulation
