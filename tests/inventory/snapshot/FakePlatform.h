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

/// What the library sees of Windows, as long as it lives: two equal cards with different memory, a display each, their
/// driver keys, and no DXCore. One call at most goes wrong.
class FakePlatform {
public:
    explicit FakePlatform(const Fault& fault);
    FakePlatform(const FakePlatform&) = delete;
    FakePlatform& operator=(const FakePlatform&) = delete;

    /// Ends what hangs, and the library's threads.
    ~FakePlatform();

    /// How often a source was called until now.
    int Calls(Source source) const;

    /// Whether the call that goes wrong was one for a LUID, by which the others are matched.
    bool IsLuidRefused() const;

private:
    std::deque<tests::ReplacedImport> replaced;
};

/// What a refused call of a source says.
int64_t RefusalOf(Source source);

} // namespace orvel::shared::inventory
