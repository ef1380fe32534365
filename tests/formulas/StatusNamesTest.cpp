#include "formulas/StatusNames.h"

#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>

#include <doctest/doctest.h>

using namespace orvel::shared::enumeration;

namespace {

constexpr char missingKey[] = "invalid unordered_map<K, T> key";

/// Compares a table with the names of the codes 0 to 255.
template <typename Code, typename NameOf>
void CheckNames(const std::map<Code, std::string>& expected, NameOf nameOf)
{
    std::map<Code, std::string> names;
    for (Code code = 0; code <= 255; ++code) {
        try {
            names.emplace(code, nameOf(code));
        } catch (const std::out_of_range&) {
        }
    }
    CHECK(names == expected);
}

} // namespace

TEST_CASE("Availability codes 1 to 21 have names, 0 and 22 throw")
{
    CHECK(AvailabilityName(1) == "Other");
    CHECK(AvailabilityName(3) == "RunningFullPower");
    CHECK(AvailabilityName(8) == "OffLine");
    CHECK(AvailabilityName(13) == "PowerSave_Unknown");
    CHECK(AvailabilityName(21) == "Quiesced");
    CHECK_THROWS_WITH_AS(AvailabilityName(0), missingKey, std::out_of_range);
    CHECK_THROWS_WITH_AS(AvailabilityName(22), missingKey, std::out_of_range);
}

TEST_CASE("Configuration errors 0 to 31 have names, 32 and negative codes throw")
{
    CHECK(ConfigErrorName(0) == "DeviceWorkingProperly");
    CHECK(ConfigErrorName(22) == "DeviceDisabled");
    CHECK(ConfigErrorName(31) == "CannotLoadDriversRequired");
    CHECK_THROWS_WITH_AS(ConfigErrorName(32), missingKey, std::out_of_range);
    CHECK_THROWS_WITH_AS(ConfigErrorName(-1), missingKey, std::out_of_range);
}

TEST_CASE("Memory types 12 and 21 to 23 intentionally have no name")
{
    for (const uint32_t code : {0U, 12U, 21U, 22U, 23U, 32U, 34U}) {
        CAPTURE(code);
        CHECK_THROWS_WITH_AS(MemoryTypeName(code), missingKey, std::out_of_range);
    }
    CHECK(MemoryTypeName(2) == "UNKNOWN");
    CHECK(MemoryTypeName(14) == "THREE_DRAM");
    CHECK(MemoryTypeName(20) == "DDR2_FB_DIMM");
    CHECK(MemoryTypeName(24) == "DDR3");
    CHECK(MemoryTypeName(26) == "DDR4");
    CHECK(MemoryTypeName(31) == "LOGICAL_NON_VOLATILE");
}

// clang-format off: one entry a line.
TEST_CASE("Every code of a table has its name, and no other code has one")
{
    const std::map<uint32_t, std::string> availabilities = {
        {1, "Other"},
        {2, "Unknown"},
        {3, "RunningFullPower"},
        {4, "Warning"},
        {5, "InTest"},
        {6, "NotApplicable"},
        {7, "PowerOff"},
        {8, "OffLine"},
        {9, "OffDuty"},
        {10, "Degraded"},
        {11, "NotInstalled"},
        {12, "InstallError"},
        {13, "PowerSave_Unknown"},
        {14, "PowerSave_LowPowerMode"},
        {15, "PowerSave_Standby"},
        {16, "PowerCycle"},
        {17, "PowerSave_Warning"},
        {18, "Paused"},
        {19, "NotReady"},
        {20, "NotConfigured"},
        {21, "Quiesced"},
    };
    const std::map<int32_t, std::string> configErrors = {
        {0, "DeviceWorkingProperly"},
        {1, "DeviceNotConfiguredCorrectly"},
        {2, "CannotLoadDriver"},
        {3, "DriverMightBeCorruptedOrSystemResourcesLow"},
        {4, "DeviceNotWorkingProperlyDueToDriverOrRegistry"},
        {5, "DriverNeedsResourceThatWindowsCannotManage"},
        {6, "BootConfigurationConflictsWithOtherDevices"},
        {7, "CannotFilter"},
        {8, "DriverLoaderMissing"},
        {9, "DeviceNotWorkingProperlyDueToFirmwareReporting"},
        {10, "DeviceCannotStart"},
        {11, "DeviceFailed"},
        {12, "DeviceCannotFindFreeResources"},
        {13, "WindowsCannotVerifyDeviceResources"},
        {14, "DeviceNeedsRestart"},
        {15, "DeviceNotWorkingProperlyDueToReEnumerationProblem"},
        {16, "WindowsCannotIdentifyDeviceResources"},
        {17, "DeviceAskingForUnknownResourceType"},
        {18, "ReinstallDrivers"},
        {19, "RegistryMightBeCorrupted"},
        {20, "FailureUsingVxDLoader"},
        {21, "SystemFailureDeviceRemoved"},
        {22, "DeviceDisabled"},
        {23, "SystemFailureChangeDriver"},
        {24, "DeviceNotPresentOrNotWorkingOrDriversNotInstalled"},
        {25, "WindowsStillSettingUpDevice1"},
        {26, "WindowsStillSettingUpDevice2"},
        {27, "InvalidLogConfiguration"},
        {28, "DriversNotInstalled"},
        {29, "DeviceDisabledDueToFirmwareResourceIssue"},
        {30, "IRQConflict"},
        {31, "CannotLoadDriversRequired"},
    };
    const std::map<uint32_t, std::string> memoryTypes = {
        {1, "OTHER"},         {2, "UNKNOWN"}, {3, "DRAM"},
        {4, "EDRAM"},         {5, "VRAM"},    {6, "SRAM"},
        {7, "RAM"},           {8, "ROM"},     {9, "FLASH"},
        {10, "EEPROM"},       {11, "FEPROM"}, {13, "CDRAM"},
        {14, "THREE_DRAM"},   {15, "SDRAM"},  {16, "SGRAM"},
        {17, "RDRAM"},        {18, "DDR"},    {19, "DDR2"},
        {20, "DDR2_FB_DIMM"}, {24, "DDR3"},   {25, "FBD2"},
        {26, "DDR4"},         {27, "LPDDR"},  {28, "LPDDR2"},
        {29, "LPDDR3"},       {30, "LPDDR4"}, {31, "LOGICAL_NON_VOLATILE"},
    };
    // clang-format on
    CheckNames(availabilities, AvailabilityName);
    CheckNames(configErrors, ConfigErrorName);
    CheckNames(memoryTypes, MemoryTypeName);
}
