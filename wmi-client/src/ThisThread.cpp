#include "ThisThread.h"

#include <atomic>

namespace orvel::shared::wmi {

uint64_t ThisThread()
{
    static std::atomic<uint64_t> threads;
    thread_local uint64_t number = 0;
    if (number == 0) {
        number = ++threads;
    }
    return number;
}

} // namespace orvel::shared::wmi
