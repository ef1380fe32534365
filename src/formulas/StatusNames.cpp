#include "formulas/StatusNames.h"

#include <unordered_map>

#include "formulas/NameOf.h"

namespace orvel::shared::enumeration {

namespace {

// clang-format off: one entry a line.
const std::unordered_map<uint32_t, std::string> availabilityNames = {
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

const std::unordered_map<int32_t, std::string> configErrorNames = {
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

// Intended: 12 and 21 to 23 have no name.
const std::unordered_map<uint32_t, std::string> memoryTypeNames = {
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

} // namespace

const std::string& AvailabilityName(uint32_t code)
{
    return NameOf(availabilityNames, code);
}

const std::string& ConfigErrorName(int32_t code)
{
    return NameOf(configErrorNames, code);
}

const std::string& MemoryTypeName(uint32_t code)
{
    return NameOf(memoryTypeNames, code);
}

std::string MemoryTypeNameOrEmpty(uint32_t code)
{
    const auto entry = memoryTypeNames.find(code);
    return entry == memoryTypeNames.end() ? std::string() : entry->second;
}

} // namespace orvel::shared::enumeration
