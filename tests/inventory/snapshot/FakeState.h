#pragma once

#include <array>
#include <atomic>
#include <mutex>
#include <string>
#include <vector>

#include <windows.h>

#include "../Readings.h"
#include "FakePlatform.h"

namespace orvel::shared::inventory {

/// The only platform at a time. One thread uses each part, except the guarded parts.
struct FakeState {
    Fault fault;
    HANDLE goOn = nullptr;
    std::array<int, sourceCount> calls{};
    bool isMatchRefused = false;
    std::atomic<int> openDrivers = 0;
    std::mutex guard;
    std::vector<std::wstring> loadedLibraries;
    std::vector<HANDLE> threads;
    std::vector<DeviceReading> devices;
    std::vector<DriverKeyReading> keys;
    std::vector<DxgiAdapter> adapters;
};
extern FakeState* state;

/// Counts a call; true if it must go wrong.
bool GoesWrong(Source source);

template <typename Function>
void* Pointer(Function* function)
{
    return reinterpret_cast<void*>(function);
}

} // namespace orvel::shared::inventory
