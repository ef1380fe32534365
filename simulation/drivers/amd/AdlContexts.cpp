#include "drivers/amd/AdlContexts.h"

#include <memory>

#include "drivers/HandleTable.h"
#include "trace/Trace.h"

namespace orvel::simulation {

namespace {

struct Context {
    AdlAllocate allocate;
    LiveObject live{Counted::Adl};
};

/// Never destroyed: a static object of the product may still make calls while the process ends.
struct Contexts {
    std::mutex mutex;
    std::map<void*, std::unique_ptr<Context>> alive;
};

Contexts& contexts = *new Contexts;

} // namespace

void* NewAdlContext(AdlAllocate allocate)
{
    const std::scoped_lock lock(contexts.mutex);
    void* const handle = NewHandle();
    contexts.alive[handle] = std::unique_ptr<Context>(new Context{allocate}); // clang 14 cannot make_unique an aggregate
    RecordOutput(handle);
    return handle;
}

bool DestroyAdlContext(void* context)
{
    const std::scoped_lock lock(contexts.mutex);
    return contexts.alive.erase(context) != 0;
}

bool IsAdlContextAlive(void* context)
{
    const std::scoped_lock lock(contexts.mutex);
    return contexts.alive.contains(context);
}

void* AllocateFromAdlCaller(void* context, int32_t bytes)
{
    AdlAllocate allocate = nullptr;
    {
        const std::scoped_lock lock(contexts.mutex);
        if (const auto found = contexts.alive.find(context); found != contexts.alive.end()) {
            allocate = found->second->allocate;
        }
    }
    return allocate ? allocate(bytes) : nullptr;
}

} // namespace orvel::simulation
