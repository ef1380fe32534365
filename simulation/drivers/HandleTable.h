#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>

namespace orvel::simulation {

/// A number that no handle had before. It is not a valid address, so dereferencing it fails.
inline void* NewHandle()
{
    static std::atomic<uint64_t> last = 0x1000000000000000;
    return reinterpret_cast<void*>(++last);
}

/// The handles of one session, each for one object of the machine. A handle is never given twice, so that one of a session
/// that has ended does not pass for a living one.
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
        return handle;
    }

    /// Null for an invalid handle.
    const Object* Find(const void* handle) const
    {
        const std::scoped_lock lock(mutex);
        const auto object = objects.find(handle);
        return object == objects.end() ? nullptr : object->second;
    }

    /// Ends all handles.
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
