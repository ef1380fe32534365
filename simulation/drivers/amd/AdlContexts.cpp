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

Contexts& TheContexts()
{
    static auto* const contexts = new Contexts;
    return *contexts;
}

} // namespace

void* NewAdlContext(AdlAllocate allocate)
{
    Contexts& contexts = TheContexts();
    const std::scoped_lock lock(contexts.mutex);
    void* const handle = NewHandle();
    contexts.alive[handle] = std::make_unique<Context>(allocate);
    return handle;
}

bool DestroyAdlContext(void* context)
{
    Contexts& contexts = TheContexts();
    const std::scoped_lock lock(contexts.mutex);
    return contexts.alive.erase(context) != 0;
}

bool IsAdlContextAlive(void* context)
{
    Contexts& contexts = TheContexts();
    const std::scoped_lock lock(contexts.mutex);
    return contexts.alive.contains(context);
}

void* AllocateFromAdlCaller(void* context, int32_t bytes)
{
    AdlAllocate allocate = nullptr;
    {
        Contexts& contexts = TheContexts();
        const std::scoped_lock lock(contexts.mutex);
        if (const auto found = contexts.alive.find(context); found != contexts.alive.end()) {
            allocate = found->second->allocate;
        }
    }
    return allocate ? allocate(bytes) : nullptr;
}

} // namespace orvel::simulation
