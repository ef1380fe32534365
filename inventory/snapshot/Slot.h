#pragma once

#include <cstdint>
#include <memory>
#include <new>
#include <optional>
#include <utility>

#include "model/Value.h"
#include "platform/Handles.h"

namespace orvel::shared::inventory {

/// Where one thread puts what a source has read, and another takes it when it is there. Only one of them uses the content at
/// any time: the first until the slot is closed, the second afterwards.
template <typename Reading>
class Slot {
public:
    Slot() : closed(::CreateEventW(nullptr, TRUE, FALSE, nullptr))
    {
        if (!closed) {
            throw std::bad_alloc();
        }
    }

    void Put(Reading reading)
    {
        content = std::move(reading);
        ::SetEvent(closed.get());
    }

    /// Closes the slot, if it is not closed, without a reading.
    void Close(int64_t code)
    {
        if (!IsClosed(0)) {
            failure = Failed(code);
            ::SetEvent(closed.get());
        }
    }

    /// Takes the reading if it comes within a time. Otherwise `end` is why not.
    std::optional<Reading> Take(uint32_t milliseconds, Answer& end)
    {
        if (!IsClosed(milliseconds)) {
            end = NoAnswer();
            return {};
        }
        end = content ? Known(true) : failure;
        return std::move(content);
    }

    /// Whether the slot is closed within a time.
    bool IsClosed(uint32_t milliseconds) const { return ::WaitForSingleObject(closed.get(), milliseconds) == WAIT_OBJECT_0; }

private:
    std::unique_ptr<std::remove_pointer_t<HANDLE>, enumeration::CloseWith<&::CloseHandle>> closed;
    std::optional<Reading> content;
    Answer failure;
};

} // namespace orvel::shared::inventory
