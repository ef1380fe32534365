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

TEST_CASE("A well-known status has its own explanation")
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

TEST_CASE("Every line that ends a run without an exception is explained")
{
    CHECK(ExplainLine("Failed to get SerialNumber from Win32_Bios").starts_with("WMI is not available"));
    CHECK(ExplainLine("Failed to get Win32_VideoController fields from WMI").find("query for the graphics adapters") !=
          std::string::npos);
    CHECK(ExplainLine("Failed to get 3DSettings services").find("without an AMD card") != std::string::npos);
    CHECK(ExplainLine("ADL initialization failed").empty()); // another line follows and is explained
}

TEST_CASE("The explanation of a status contains its number")
{
    CHECK(ExplainStatus(static_cast<long>(0x80041003)).find("0x80041003") != std::string::npos);
}
