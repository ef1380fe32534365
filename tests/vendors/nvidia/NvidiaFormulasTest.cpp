#include "vendors/nvidia/NvidiaFormulas.h"

#include <doctest/doctest.h>

using namespace orvel::shared::enumeration;

TEST_CASE("The device id is the upper half of NVAPI's number, in lower case and with leading zeros")
{
    CHECK(NvidiaDeviceId(0x1F0810DE) == "1f08");
    CHECK(NvidiaDeviceId(0x0A3C10DE) == "0a3c");
    CHECK(NvidiaDeviceId(0x000010DE) == "0000");
    CHECK(NvidiaDeviceId(0xFFFF10DE) == "ffff");
}

TEST_CASE("The subsystem id consists of both halves of NVAPI's number, in lower case and with leading zeros")
{
    CHECK(NvidiaSubsystemId(0x87C1103C) == "87c1-103c");
    CHECK(NvidiaSubsystemId(0x00001458) == "0000-1458");
    CHECK(NvidiaSubsystemId(0x397D1462) == "397d-1462");
    CHECK(NvidiaSubsystemId(0) == "0000-0000");
}

TEST_CASE("A PCI Express lane has the rate of its generation, and no rate outside generations 1 to 5")
{
    CHECK(PcieLaneRate(1) == 250U);
    CHECK(PcieLaneRate(2) == 500U);
    CHECK(PcieLaneRate(3) == 985U);
    CHECK(PcieLaneRate(4) == 1969U);
    CHECK(PcieLaneRate(5) == 3938U);
    for (const uint32_t generation : {0U, 6U, 4294967295U}) {
        CAPTURE(generation);
        CHECK_FALSE(PcieLaneRate(generation));
    }
}

TEST_CASE("The memory bandwidth is clock times bus width times 2 / 8192")
{
    CHECK(NvidiaMemoryBandwidth(9501, 256) == 593.8125F);
    CHECK(NvidiaMemoryBandwidth(7501, 192) == 351.609375F);
    CHECK(NvidiaMemoryBandwidth(4096, 1) == 1.0F);
    CHECK(NvidiaMemoryBandwidth(0, 256) == 0.0F);
    CHECK(NvidiaMemoryBandwidth(9501, 0) == 0.0F);
}

TEST_CASE("The compute capability is major plus a tenth of minor, even for a minor of 10 or more")
{
    CHECK(CudaCapability(8, 9) == 8.9F);
    CHECK(CudaCapability(8, 6) == 8.6F);
    CHECK(CudaCapability(7, 5) == 7.5F);
    CHECK(CudaCapability(8, 10) == 9.0F);
    CHECK(CudaCapability(12, 0) == 12.0F);
}

TEST_CASE("A clock in kHz is divided by 1000 to MHz, and keeps its fraction")
{
    CHECK(ToMegahertz(7001000) == 7001.0F);
    CHECK(ToMegahertz(1770000) == 1770.0F);
    CHECK(ToMegahertz(1777500) == 1777.5F);
    CHECK(ToMegahertz(0) == 0.0F);
}
