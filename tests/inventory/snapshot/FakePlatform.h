#pragma once

#include <array>
#include <cstdint>
#include <deque>

#include "model/Value.h"
#include "support/ReplacedImport.h"

namespace orvel::shared::inventory {

/// A call of a source that goes wrong: the `number`-th, counted from 0.
struct Fault {
    enum Kind { None, Refuses, Hangs } kind = None;
    Source source = Source::SetupApi;
    int number = 0;
};

/// Replaces Windows for the library during its lifetime: two equal cards with different memory, a display each, and their
/// driver keys; no DXCore. At most one call goes wrong.
class FakePlatform {
public:
    explicit FakePlatform(const Fault& fault);
    FakePlatform(const FakePlatform&) = delete;
    FakePlatform& operator=(const FakePlatform&) = delete;

    /// Ends hanging calls, and the library's threads.
    ~FakePlatform();

    /// The number of calls of a source so far.
    int Calls(Source source) const;

    /// Whether the call that went wrong reads a LUID, which the matching of the other sources needs.
    bool IsLuidRefused() const;

private:
    std::deque<tests::ReplacedImport> replaced;
};

/// The error code of a failed call of a source.
int64_t RefusalOf(Source source);

} // namespace orvel::shared::inventory
