// Calls that take long.

#include <chrono>
#include <thread>

#include <doctest/doctest.h>

#include <windows.h>

#include "simulation/Drivers.h"

using namespace orvel::tests;

namespace {

std::chrono::milliseconds TimeOfCall()
{
    const auto start = std::chrono::steady_clock::now();
    UINT32 paths = 0, modes = 0;
    ::GetDisplayConfigBufferSizes(QDC_ONLY_ACTIVE_PATHS, &paths, &modes);
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
}

Json Hanging(const Json& hang)
{
    return {{"displays", Json::object()}, {"hang", {hang}}};
}

} // namespace

TEST_CASE("A call hangs as long as the file says, and each one or one alone")
{
    Simulate(Hanging({{"call", "displays GetDisplayConfig"}, {"milliseconds", 150}}));
    CHECK(TimeOfCall().count() >= 150);
    CHECK(TimeOfCall().count() >= 150);
    Simulate(Hanging({{"call", "displays GetDisplayConfig"}, {"nth", 2}, {"milliseconds", 600}}));
    CHECK(TimeOfCall().count() < 600);
    CHECK(TimeOfCall().count() >= 600);
    CHECK(TimeOfCall().count() < 600);
    CHECK(Trace().size() == 3);
}

TEST_CASE("The next machine ends a call that hangs, and does not see what its thread does")
{
    Simulate(Hanging({{"call", "displays "}, {"milliseconds", 60'000}}));
    long long milliseconds = 0;
    std::thread hanging([&] {
        milliseconds = TimeOfCall().count();
        TimeOfCall();
    });
    while (Trace().empty()) {
        ::Sleep(1);
    }
    Simulate({{"displays", Json::object()}});
    hanging.join();
    CHECK(milliseconds < 60'000);
    CHECK(Trace().empty());
    TimeOfCall();
    CHECK(Trace().size() == 1);
}
