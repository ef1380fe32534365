#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "model/Value.h"
#include "support/ReplacedImport.h"

namespace orvel::shared::inventory {

/// A call of a source that goes wrong: the `number`-th, counted from 0.
struct Fault {
    enum Kind { None, Refuses, Hangs } kind = None;
    Source source = Source::SetupApi;
    int number = 0;
};

/// Replaces Windows for the library during its lifetime: two equal cards with different memory, a display each, their
/// driver keys, NVML and NVAPI; no DXCore, no ADLX. At most one call goes wrong.
class FakePlatform {
public:
    explicit FakePlatform(const Fault& fault);
    FakePlatform(const FakePlatform&) = delete;
    FakePlatform& operator=(const FakePlatform&) = delete;

    /// Ends hanging calls, and the library's threads.
    ~FakePlatform();

    /// The number of calls of a source so far.
    int Calls(Source source) const;

    /// Whether the call that went wrong reads a LUID or an address, which the matching of the other sources needs.
    bool IsMatchRefused() const;

    /// Puts a card to sleep.
    void LetSleep(std::size_t card);

    /// The names of the DLLs that were loaded, in order.
    std::vector<std::wstring> LoadedLibraries() const;

    /// How many sessions of the vendors' drivers there are, and how many of their libraries are loaded.
    int OpenDrivers() const;

    /// How many of the library's threads run.
    std::size_t RunningThreads() const;

private:
    std::deque<tests::ReplacedImport> replaced;
};

/// The error code of a failed call of a source.
int64_t RefusalOf(Source source);

} // namespace orvel::shared::inventory
