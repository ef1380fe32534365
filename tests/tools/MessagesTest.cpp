#include "Messages.h"

#include <doctest/doctest.h>

#include "formulas/RunFailure.h"

using namespace orvel::tools;
using namespace orvel::shared::enumeration;

TEST_CASE("Every failure that can end a run is explained")
{
    for (int index = 0; index <= static_cast<int>(RunFailure::NoMemory); ++index) {
        const std::string message = MessageOf(static_cast<RunFailure>(index));
        CAPTURE(message);
        CHECK_FALSE(ExplainMessage(message).empty());
    }
}

TEST_CASE("A status that says more has an explanation of its own")
{
    CHECK(ExplainMessage("Failed to initialize NVAPI. Status code: -2").find("nvapi64.dll is missing") != std::string::npos);
    CHECK(ExplainMessage("Failed to initialize NVAPI. Status code: -1") == ExplainMessage("Failed to initialize NVAPI"));
    CHECK(ExplainMessage("Failed to initialize NVML. Status code: 9").find("substitute") != std::string::npos);
    CHECK(ExplainMessage("Failed to initialize NVML. Status code: 99") == ExplainMessage("Failed to initialize NVML"));
}

TEST_CASE("An unknown message has no explanation")
{
    CHECK(ExplainMessage("").empty());
    CHECK(ExplainMessage("something else").empty());
}

TEST_CASE("The explanation of a status names it")
{
    CHECK(ExplainStatus(static_cast<long>(0x80041003)).find("0x80041003") != std::string::npos);
}
