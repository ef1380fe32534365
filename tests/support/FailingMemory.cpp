#include "FailingMemory.h"

#include <cstdlib>
#include <new>

#include <windows.h>

namespace orvel::tests {

namespace {

DWORD failingThread = 0; // 0: memory does not fail
size_t allocationsLeft = 0;
FailingMemory::Until failsUntil = FailingMemory::Until::Next;
bool hasFailed = false;

bool Fails()
{
    if (failingThread != ::GetCurrentThreadId()) {
        return false;
    }
    if (allocationsLeft > 0) {
        --allocationsLeft;
        return false;
    }
    const bool fails = !hasFailed || failsUntil == FailingMemory::Until::End;
    hasFailed = true;
    return fails;
}

} // namespace

FailingMemory::FailingMemory(size_t successes, Until until)
{
    allocationsLeft = successes;
    failsUntil = until;
    hasFailed = false;
    failingThread = ::GetCurrentThreadId();
}

FailingMemory::~FailingMemory()
{
    failingThread = 0;
}

bool FailingMemory::HasFailed()
{
    return hasFailed;
}

} // namespace orvel::tests

void* operator new(std::size_t bytes)
{
    void* const memory = orvel::tests::Fails() ? nullptr : std::malloc(bytes);
    if (!memory) {
        throw std::bad_alloc();
    }
    return memory;
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}
