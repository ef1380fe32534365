#include "snapshot/Threads.h"

#include <algorithm>
#include <iterator>

namespace orvel::shared::inventory {

namespace {

/// The host's default may be too little for a display driver.
constexpr SIZE_T stackBytes = 1 << 20;

struct Task {
    std::function<void()> work;
    enumeration::ModuleHandle library;
};

void Run(Task& task) noexcept
{
    try {
        task.work();
    } catch (...) {
        // Whoever waits finds that nothing has come.
    }
}

DWORD WINAPI RunThread(void* parameter)
{
    std::unique_ptr<Task> task(static_cast<Task*>(parameter));
    Run(*task);
    HMODULE library = task->library.release();
    task.reset();
    ::FreeLibraryAndExitThread(library, 0);
}

} // namespace

uint32_t Threads::Start(std::function<void()> work)
{
    threads.reserve(threads.size() + 1); // nothing is thrown after the thread has begun
    auto task =
        std::make_unique<Task>(Task{std::move(work), enumeration::ModuleOf(reinterpret_cast<const void*>(&RunThread))});
    Thread thread(::CreateThread(nullptr, stackBytes, &RunThread, task.get(), STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr));
    if (!thread) {
        return ::GetLastError();
    }
    static_cast<void>(task.release()); // the thread's
    threads.push_back(std::move(thread));
    return 0;
}

void Threads::Await(uint32_t milliseconds) const
{
    std::vector<HANDLE> handles;
    std::transform(threads.begin(), threads.end(), std::back_inserter(handles),
                   [](const Thread& each) { return each.get(); });
    if (!handles.empty()) {
        ::WaitForMultipleObjects(static_cast<DWORD>(handles.size()), handles.data(), TRUE, milliseconds);
    }
}

} // namespace orvel::shared::inventory
