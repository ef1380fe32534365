#include "vendors/BaseGraphicCard.h"

#include <dwmapi.h>

#include "formulas/StatusNames.h"
#include "platform/Log.h"
#include "system/WmiText.h"

namespace orvel::shared::enumeration {

namespace {

bool IsWindowsVistaOrLater()
{
    OSVERSIONINFOEXW version{};
    version.dwOSVersionInfoSize = sizeof(version);
    version.dwMajorVersion = 6;
    const DWORDLONG condition = ::VerSetConditionMask(0, VER_MAJORVERSION, VER_GREATER_EQUAL);
    return ::VerifyVersionInfoW(&version, VER_MAJORVERSION, condition) != FALSE;
}

} // namespace

uint32_t BaseGraphicCard::GetAvailabilityCode(wmi::WMIClient& row) const
{
    uint32_t code = 0;
    if (row.GetValue(L"Availability", code) != 0) {
        PLOGW << "Failed to get Availability from WMI";
    }
    return code; // GetValue writes on success only
}

uint32_t BaseGraphicCard::GetConfigError(wmi::WMIClient& row) const
{
    uint32_t code = 0;
    if (row.GetValue(L"ConfigManagerErrorCode", code) != 0) {
        PLOGW << "Failed to get ConfigManagerErrorCode from WMI";
    }
    return code;
}

bool BaseGraphicCard::GetUserConfig(wmi::WMIClient& row) const
{
    bool userConfig = false;
    if (row.GetValue(L"ConfigManagerUserConfig", userConfig) != 0) {
        PLOGW << "Failed to get ConfigManagerUserConfig from WMI";
    }
    return userConfig;
}

std::string BaseGraphicCard::GetCurrentResolution(wmi::WMIClient& row) const
{
    std::string width;
    std::string height;
    if (ReadText(row, L"CurrentHorizontalResolution", width) && ReadText(row, L"CurrentVerticalResolution", height)) {
        return width + "x" + height;
    }
    PLOGW << "Failed to get current resolution from WMI.";
    return {};
}

uint32_t BaseGraphicCard::GetCurrentRefreshRate(wmi::WMIClient& row) const
{
    uint32_t hertz = 0;
    if (row.GetValue(L"CurrentRefreshRate", hertz) != 0) {
        PLOGW << "Failed to get current refresh rate from WMI";
    }
    return hertz;
}

std::string BaseGraphicCard::GetDriverVersion(wmi::WMIClient& row) const
{
    std::string version;
    if (!ReadText(row, L"DriverVersion", version)) {
        PLOGW << "Failed to get driver version from WMI";
    }
    return version;
}

std::string BaseGraphicCard::GetDriverReleaseDate(wmi::WMIClient& row) const
{
    std::string date;
    if (!ReadText(row, L"DriverDate", date)) {
        PLOGW << "Failed to get Driver Date from WMI";
    }
    return date;
}

std::string BaseGraphicCard::GetAdapterName(wmi::WMIClient& row) const
{
    std::string name;
    if (!ReadText(row, L"Name", name)) {
        PLOGW << "Failed to get Adapter Name from WMI";
    }
    return name;
}

uint32_t BaseGraphicCard::GetAdapterRam(wmi::WMIClient& row) const
{
    uint32_t bytes = 0;
    if (row.GetValue(L"AdapterRAM", bytes) != 0) {
        PLOGW << "Failed to get AdapterRAM from WMI";
    }
    return bytes >> 20;
}

std::string BaseGraphicCard::GetAdapterStatus(wmi::WMIClient& row) const
{
    std::string status;
    if (!ReadText(row, L"Status", status)) {
        PLOGW << "Failed to get Status from WMI";
    }
    return status;
}

bool BaseGraphicCard::IsAeroEnabled() const
{
    if (!IsWindowsVistaOrLater()) {
        return false;
    }
    BOOL enabled = FALSE;
    return SUCCEEDED(::DwmIsCompositionEnabled(&enabled)) && enabled != FALSE;
}

void BaseGraphicCard::ReadDriverAndDisplay(wmi::WMIClient& row, GraphicCardProperties& card) const
{
    card.IsAeroEnabled = IsAeroEnabled();
    card.DriverVersion = GetDriverVersion(row);
    card.CurrentRefreshRate = GetCurrentRefreshRate(row);
    card.CurrentResolution = GetCurrentResolution(row);
    card.UserConfig = GetUserConfig(row);
    card.ConfigErrorStatus = ConfigErrorName(static_cast<int32_t>(card.ConfigError));
    card.AvailabilityStatus = AvailabilityName(card.AvailabilityCode);
}

} // namespace orvel::shared::enumeration
