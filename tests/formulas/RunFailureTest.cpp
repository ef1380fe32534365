#include <doctest/doctest.h>

#include "formulas/RunFailure.h"

using namespace orvel::shared::enumeration;

namespace {

constexpr int lastFailure = static_cast<int>(RunFailure::NoMemory);

} // namespace

TEST_CASE("Every failure has a message that identifies it")
{
    for (int index = 0; index <= lastFailure; ++index) {
        const auto failure = static_cast<RunFailure>(index);
        const std::string message = MessageOf(failure);
        CAPTURE(index);
        CHECK_FALSE(message.empty());
        const auto found = FindRunFailure(message);
        REQUIRE(found);
        CHECK(found->Failure == failure);
        CHECK_FALSE(found->Status);
    }
}

TEST_CASE("A status follows the message")
{
    const std::string message = MessageOf(RunFailure::NoNvapi, -2);
    CHECK(message == "Failed to initialize NVAPI. Status code: -2");
    const auto found = FindRunFailure(message);
    REQUIRE(found);
    CHECK(found->Failure == RunFailure::NoNvapi);
    CHECK(found->Status == -2);
}

TEST_CASE("Any other text is not a failure")
{
    for (const std::string text :
         {"", "bad", "bad allocation.", "invalid stoi argument ",
          "Failed to initialize NVAPI. Status code: ", "Failed to initialize NVAPI. Status code: 1x"}) {
        CAPTURE(text);
        CHECK_FALSE(FindRunFailure(text));
    }
}
