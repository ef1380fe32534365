#include "system/SharedSystemMemory.h"

#include <doctest/doctest.h>

#include "support/SimulatedRun.h"

using namespace orvel::shared::enumeration;
using namespace orvel::tests;

namespace {

constexpr uint64_t mebibyte = 1048576;

Json Adapter(uint32_t device, uint32_t subsystem, uint64_t sharedBytes)
{
    return {{"VendorId", 0x8086}, {"DeviceId", device}, {"SubSysId", subsystem}, {"SharedSystemMemory", sharedBytes}};
}

Json Adapters(const std::vector<Json>& adapters)
{
    return {{"dxgi", {{"adapters", adapters}}}};
}

} // namespace

TEST_CASE("Shared memory counts whole gibibytes, rounded down")
{
    Simulate(Adapters({Adapter(0x5917, 0x225D17AA, (3 * 1024 + 1023) * mebibyte)}));
    CHECK(GetSharedSystemMemory({"8086", "5917", "225D-17AA"}) == "3");
    CHECK(Live()["dxgi"] == 0);
}

TEST_CASE("An adapter is matched by all three of its identifiers")
{
    Simulate(Adapters({Adapter(0x5917, 1, 2048 * mebibyte), Adapter(0x5918, 0x225D17AA, 3072 * mebibyte),
                       Adapter(0x5917, 0x225D17AA, 4096 * mebibyte), Adapter(0x5917, 0x225D17AA, 5120 * mebibyte)}));
    CHECK(GetSharedSystemMemory({"8086", "5917", "225D-17AA"}) == "4");
    CHECK(GetSharedSystemMemory({"1002", "5917", "225D-17AA"}) == "0");
}

TEST_CASE("Every hyphen of a subsystem identifier is removed before the conversion; none is required")
{
    Simulate(Adapters({Adapter(0x5917, 0x225D17AA, 2048 * mebibyte)}));
    CHECK(GetSharedSystemMemory({"8086", "5917", "225D17AA"}) == "2");
    CHECK(GetSharedSystemMemory({"8086", "5917", "-22-5D17-AA-"}) == "2");
}

TEST_CASE("The text is empty if DXGI is not available")
{
    Simulate(Json::object());
    CHECK(GetSharedSystemMemory({"8086", "5917", "225D-17AA"}) == "");
}

TEST_CASE("Identifiers that are not hexadecimal numbers throw before DXGI is called")
{
    Simulate(Adapters(Json::array()));
    CHECK_THROWS_WITH_AS(GetSharedSystemMemory({"", "", ""}), "invalid stoi argument", std::invalid_argument);
    CHECK_THROWS_WITH_AS(GetSharedSystemMemory({"8086", "xyz", "1-2"}), "invalid stoi argument", std::invalid_argument);
    CHECK_THROWS_WITH_AS(GetSharedSystemMemory({"8086", "5917", "-"}), "invalid stoul argument", std::invalid_argument);
    CHECK_THROWS_WITH_AS(GetSharedSystemMemory({"FFFFFFFF", "5917", "1-2"}), "stoi argument out of range",
                         std::out_of_range);
    CHECK_THROWS_WITH_AS(GetSharedSystemMemory({"8086", "5917", "225D-17AA0"}), "stoul argument out of range",
                         std::out_of_range);
    CHECK(Trace().empty());
}
