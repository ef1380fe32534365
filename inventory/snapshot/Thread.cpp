#include "snapshot/Thread.h"

#include <memory>

#include "platform/Handles.h"

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

using Thread = std::unique_ptr<std::remove_pointer_t<HANDLE>, enumeration::CloseWith<&::CloseHandle>>;

} // namespace

uint32_t StartThread(std::function<void()> work)
{
    auto task =
        std::make_unique<Task>(Task{std::move(work), enumeration::ModuleOf(reinterpret_cast<const void*>(&RunThread))});
    const Thread thread(
        ::CreateThread(nullptr, stackBytes, &RunThread, task.get(), STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr));
    if (!thread) {
        return ::GetLastError();
    }
    static_cast<void>(task.release()); // the thread's
    return 0;
}

} // namespace orvel::shared::inventory
