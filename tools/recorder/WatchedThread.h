#pragma once

// A driver that hangs must not keep a recording from its end. What may call one runs on a thread of its own, and is given up
// when it makes no progress for a while. A machine file has the key "hang" for the call that has not returned.

#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include <windows.h>

#include "platform/Handles.h"
#include "snapshot/Threads.h"

namespace orvel::recorder {

/// What a thread has recorded, and the call that has kept it from recording more; "" where nothing has.
template <typename Content>
struct Recorded {
    Content content{};
    std::string hangingCall;
};

/// What a watched thread and its caller share.
template <typename Content>
class WatchedThread {
public:
    WatchedThread(std::string firstCall, Content beginning)
        : recorded{std::move(beginning), std::move(firstCall)}, hasNews(::CreateEventW(nullptr, FALSE, FALSE, nullptr))
    {
        if (!hasNews) {
            throw std::bad_alloc();
        }
    }

    /// Keeps what is recorded so far. `nextCall` is the first of those that follow, as its line in a trace begins.
    void Publish(Content content, std::string nextCall)
    {
        const std::scoped_lock lock(mutex);
        recorded = {std::move(content), std::move(nextCall)};
        ::SetEvent(hasNews.get());
    }

    void End(std::exception_ptr thrown)
    {
        const std::scoped_lock lock(mutex);
        error = std::move(thrown);
        isEnded = true;
        ::SetEvent(hasNews.get());
    }

    /// Waits for the end, or until nothing has been published for so long. Throws what has ended the thread.
    Recorded<Content> Await(uint32_t patienceMilliseconds)
    {
        for (bool isPatient = true;;) {
            {
                const std::scoped_lock lock(mutex);
                if (error) {
                    std::rethrow_exception(error);
                }
                if (isEnded || !isPatient) {
                    return isEnded ? Recorded<Content>{recorded.content, ""} : recorded;
                }
            }
            isPatient = ::WaitForSingleObject(hasNews.get(), patienceMilliseconds) == WAIT_OBJECT_0;
        }
    }

private:
    using Event = std::unique_ptr<std::remove_pointer_t<HANDLE>, shared::enumeration::CloseWith<&::CloseHandle>>;

    std::mutex mutex;
    Recorded<Content> recorded;
    bool isEnded = false;
    std::exception_ptr error;
    Event hasNews;
};

/// Runs `record`, which publishes what it records on the thread that it gets. If it makes no progress in the time, the
/// result is what it has published last; before it does, `beginning`. Then it may run on, and nobody takes what it still
/// records.
template <typename Content, typename Record>
Recorded<Content> RecordOnThread(std::string firstCall, Content beginning, uint32_t patienceMilliseconds, Record record)
{
    const auto thread = std::make_shared<WatchedThread<Content>>(std::move(firstCall), std::move(beginning));
    shared::inventory::Threads threads;
    const uint32_t error = threads.Start([thread, record] {
        std::exception_ptr thrown;
        try {
            record(*thread);
        } catch (...) {
            thrown = std::current_exception();
        }
        thread->End(thrown);
    });
    if (error != 0) {
        throw std::runtime_error("no thread can be started, error " + std::to_string(error));
    }
    auto recorded = thread->Await(patienceMilliseconds);
    if (recorded.hangingCall.empty()) {
        threads.Await(patienceMilliseconds); // it only has to end
    }
    return recorded;
}

} // namespace orvel::recorder
