#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>

#include "trace/Recording.h"

namespace orvel::simulation {

/// A value that no handle has had before. It is not a valid address, so dereferencing it fails.
inline void* NewHandle()
{
    static std::atomic<uint64_t> last = 0x1000000000000000;
    return reinterpret_cast<void*>(++last);
}

/// The handles of one session, one for each object of the machine. Values are never reused, so that a handle of an earlier
/// session is not valid in a later one.
template <typename Object>
class HandleTable {
public:
    /// The object's handle, the same each time.
    void* HandleOf(const Object& object)
    {
        const std::scoped_lock lock(mutex);
        void*& handle = handles[&object];
        if (!handle) {
            handle = NewHandle();
            objects[handle] = &object;
        }
        RecordOutput(handle);
        return handle;
    }

    /// Null for an invalid handle.
    const Object* Find(const void* handle) const
    {
        const std::scoped_lock lock(mutex);
        const auto object = objects.find(handle);
        return object == objects.end() ? nullptr : object->second;
    }

    /// Invalidates all handles.
    void Clear()
    {
        const std::scoped_lock lock(mutex);
        handles.clear();
        objects.clear();
    }

private:
    mutable std::mutex mutex;
    std::map<const Object*, void*> handles;
    std::map<const void*, const Object*> objects;
};

} // namespace orvel::simulation
