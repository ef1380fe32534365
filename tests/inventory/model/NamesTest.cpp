#include <doctest/doctest.h>

#include <string>

#include "model/Names.h"

namespace orvel::shared::inventory {

namespace {

TEST_CASE("Vendors have their common names")
{
    CHECK(std::string(VendorName(0x10DE)) == "NVIDIA");
    CHECK(std::string(VendorName(0x1002)) == "AMD");
    CHECK(std::string(VendorName(0x8086)) == "Intel");
    CHECK(std::string(VendorName(0x1414)) == "Microsoft");
    CHECK(std::string(VendorName(0x4D4F4351)) == "Qualcomm");
    CHECK(VendorName(0xFFFF) == nullptr);
}

TEST_CASE("Problems have the names of their constants, without the prefix")
{
    CHECK(std::string(ProblemName(0)) == "none");
    CHECK(std::string(ProblemName(22)) == "DISABLED");
    CHECK(std::string(ProblemName(28)) == "FAILED_INSTALL");
    CHECK(std::string(ProblemName(43)) == "FAILED_POST_START");
    CHECK(std::string(ProblemName(57)) == "GUEST_ASSIGNMENT_FAILED");
    CHECK(ProblemName(58) == nullptr);
}

TEST_CASE("Every connector number has a name, except the unused one")
{
    CHECK(std::string(ConnectorName(5)) == "HDMI");
    CHECK(std::string(ConnectorName(0x80000000)) == "internal");
    CHECK(std::string(ConnectorName(0xFFFFFFFF)) == "other");
    CHECK(ConnectorName(7) == nullptr);
}

} // namespace

} // namespace orvel::shared::inventory
