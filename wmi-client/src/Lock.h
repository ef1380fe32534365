#pragma once

#include <windows.h>

namespace orvel::shared::wmi {

/// A lock that takes nothing of the process. std::mutex would keep a handle and memory each time that the DLL is loaded.
class Lock {
public:
    void lock() noexcept { ::AcquireSRWLockExclusive(&native); }
    void unlock() noexcept { ::ReleaseSRWLockExclusive(&native); }

private:
    SRWLOCK native = SRWLOCK_INIT;
};

} // namespace orvel::shared::wmi
