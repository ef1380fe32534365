// The answers of simulated calls, and what they write to the caller's memory.

#include <doctest/doctest.h>

#include "machine/Answer.h"

using namespace orvel::simulation;

namespace {

constexpr uint32_t untouched = 7;
constexpr uint32_t rubbish = 0x5A5A5A5A;

/// The status, and what is in the caller's memory afterwards.
std::pair<int32_t, uint32_t> Give(const Answer<uint32_t>& answer)
{
    uint32_t target = untouched;
    const int32_t status = answer.GiveTo(&target, -104);
    return {status, target};
}

} // namespace

TEST_CASE("A call that the file does not describe is not supported, and writes nothing")
{
    CHECK(Give({}) == std::pair(-104, untouched));
}

TEST_CASE("A call writes its value with any status")
{
    CHECK(Give({true, 0, 3}) == std::pair(0, 3U));
    CHECK(Give({true, -1, 3}) == std::pair(-1, 3U));
    CHECK(Give({true, -1, std::nullopt}) == std::pair(-1, untouched));
}

TEST_CASE("A successful call can write nothing, and a failing one garbage")
{
    CHECK(Give({true, 0, 3, Writes::Nothing}) == std::pair(0, untouched));
    CHECK(Give({true, -1, std::nullopt, Writes::Rubbish}) == std::pair(-1, rubbish));
    CHECK(Give({true, 0, 3, Writes::Rubbish}) == std::pair(0, rubbish));
}
