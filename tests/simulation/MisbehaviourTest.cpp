// The key "writes" of machine files, which makes a call misbehave.

#include <doctest/doctest.h>

#include "support/SimulatedRun.h"

using namespace orvel::tests;

namespace {

/// The reason why the machine is refused; "" if it is accepted.
std::string Problem(const Json& nvapiGpu)
{
    try {
        Simulate({{"nvapi", {{"gpus", Json::array({nvapiGpu})}}}});
        return "";
    } catch (const std::runtime_error& error) {
        return error.what();
    }
}

} // namespace

TEST_CASE("An unknown or unsuitable \"writes\" value is rejected with its position")
{
    const std::string place = "test machine: /nvapi/gpus/0/";
    CHECK(Problem({{"NvAPI_GPU_GetBusId", {{"status", 0}, {"writes", "noise"}}}}) ==
          place + "NvAPI_GPU_GetBusId/writes: expected \"nothing\" or \"rubbish\", found \"noise\"");
    CHECK(Problem({{"NvAPI_GPU_GetFullName", {{"status", 0}, {"writes", "noise"}}}}) ==
          place + "NvAPI_GPU_GetFullName/writes: expected \"nothing\", \"rubbish\" or \"unterminated\", found \"noise\"");
    CHECK(Problem({{"NvAPI_GPU_GetFullName", {{"status", 0}, {"writes", "unterminated"}}}}) ==
          place + "NvAPI_GPU_GetFullName: \"unterminated\" needs a value");
    CHECK(Problem({{"NvAPI_GPU_GetBusId", {{"status", -1}, {"writes", "rubbish"}}}}) == "");
}

TEST_CASE("The report counts 0 violations if there are none")
{
    Simulate(Json::object());
    CHECK(TakeViolations().empty());
}
