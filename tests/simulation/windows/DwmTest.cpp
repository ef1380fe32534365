// The simulated desktop window manager.

#include <doctest/doctest.h>

#include "simulation/Drivers.h"

using namespace orvel::tests;

namespace {

constexpr BOOL untouched = 7;

/// The status, and what is in the caller's memory afterwards.
std::pair<int32_t, BOOL> IsCompositionEnabled(const Json& dwm)
{
    Simulate({{"dwm", dwm}});
    const Driver driver(L"dwmapi.dll");
    BOOL enabled = untouched;
    const int32_t status = driver.Call("DwmIsCompositionEnabled", &enabled);
    return {status, enabled};
}

} // namespace

TEST_CASE("Composition is on, unless the file says otherwise")
{
    CHECK(IsCompositionEnabled(Json::object()) == std::pair(0, TRUE));
    CHECK(IsCompositionEnabled({{"enabled", false}}) == std::pair(0, FALSE));
}

TEST_CASE("The window manager writes nothing on failure, unless the file states a value")
{
    CHECK(IsCompositionEnabled({{"status", -1}}) == std::pair(-1, untouched));
    CHECK(IsCompositionEnabled({{"status", -1}, {"enabled", true}}) == std::pair(-1, TRUE));
}

TEST_CASE("The window manager rejects null")
{
    Simulate({{"dwm", Json::object()}});
    const Driver driver(L"dwmapi.dll");
    CHECK(driver.Call("DwmIsCompositionEnabled", nullptr) == E_INVALIDARG);
    CHECK(Trace() == std::vector<std::string>{"dwm DwmIsCompositionEnabled"});
}
