#include "windows/SystemScope.h"

#include <mutex>

#include "windows/Registry.h"

namespace orvel::simulation {

namespace {

thread_local int depth = 0;

/// The threads that have a scope: the registry is the process's.
struct Threads {
    std::mutex mutex;
    int count = 0;
};
Threads& threads = *new Threads;

} // namespace

SystemScope::SystemScope()
{
    if (depth++ > 0) {
        return;
    }
    const std::scoped_lock lock(threads.mutex);
    if (threads.count++ == 0) {
        PauseRegistry();
    }
}

SystemScope::~SystemScope()
{
    if (--depth > 0) {
        return;
    }
    const std::scoped_lock lock(threads.mutex);
    if (--threads.count == 0) {
        ResumeRegistry();
    }
}

bool SystemScope::IsActive()
{
    return depth > 0;
}

} // namespace orvel::simulation
