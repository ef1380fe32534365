#pragma once

#include <windows.h>

namespace orvel::shared::wmi {

/// A lock without process resources. std::mutex would leak a handle and memory each time the DLL is loaded.
class Lock {
public:
    void lock() noexcept { ::AcquireSRWLockExclusive(&native); }
    void unlock() noexcept { ::ReleaseSRWLockExclusive(&native); }

private:
    SRWLOCK native = SRWLOCK_INIT;
};

} // namespace orvel::shared::wmi
