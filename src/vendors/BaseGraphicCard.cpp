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

uint32_t BaseGraphicCard::GetAvailabilityCode(wmi::WMIClient& client) const
{
    uint32_t code = 0;
    if (client.GetValue(L"Availability", code) != 0) {
        PLOGW << "Failed to get Availability from WMI";
    }
    return code; // GetValue writes on success only
}

uint32_t BaseGraphicCard::GetConfigError(wmi::WMIClient& client) const
{
    uint32_t code = 0;
    if (client.GetValue(L"ConfigManagerErrorCode", code) != 0) {
        PLOGW << "Failed to get ConfigManagerErrorCode from WMI";
    }
    return code;
}

bool BaseGraphicCard::GetUserConfig(wmi::WMIClient& client) const
{
    bool userConfig = false;
    if (client.GetValue(L"ConfigManagerUserConfig", userConfig) != 0) {
        PLOGW << "Failed to get ConfigManagerUserConfig from WMI";
    }
    return userConfig;
}

std::string BaseGraphicCard::GetCurrentResolution(wmi::WMIClient& client) const
{
    std::string width;
    std::string height;
    if (ReadText(client, L"CurrentHorizontalResolution", width) && ReadText(client, L"CurrentVerticalResolution", height)) {
        return width + "x" + height;
    }
    PLOGW << "Failed to get current resolution from WMI.";
    return {};
}

uint32_t BaseGraphicCard::GetCurrentRefreshRate(wmi::WMIClient& client) const
{
    uint32_t hertz = 0;
    if (client.GetValue(L"CurrentRefreshRate", hertz) != 0) {
        PLOGW << "Failed to get current refresh rate from WMI";
    }
    return hertz;
}

std::string BaseGraphicCard::GetDriverVersion(wmi::WMIClient& client) const
{
    std::string version;
    if (!ReadText(client, L"DriverVersion", version)) {
        PLOGW << "Failed to get driver version from WMI";
    }
    return version;
}

std::string BaseGraphicCard::GetDriverReleaseDate(wmi::WMIClient& client) const
{
    std::string date;
    if (!ReadText(client, L"DriverDate", date)) {
        PLOGW << "Failed to get Driver Date from WMI";
    }
    return date;
}

std::string BaseGraphicCard::GetAdapterName(wmi::WMIClient& client) const
{
    std::string name;
    if (!ReadText(client, L"Name", name)) {
        PLOGW << "Failed to get Adapter Name from WMI";
    }
    return name;
}

uint32_t BaseGraphicCard::GetAdapterRam(wmi::WMIClient& client) const
{
    uint32_t bytes = 0;
    if (client.GetValue(L"AdapterRAM", bytes) != 0) {
        PLOGW << "Failed to get AdapterRAM from WMI";
    }
    return bytes >> 20;
}

std::string BaseGraphicCard::GetAdapterStatus(wmi::WMIClient& client) const
{
    std::string status;
    if (!ReadText(client, L"Status", status)) {
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

void BaseGraphicCard::ReadDriverAndDisplay(wmi::WMIClient& client, GraphicCardProperties& card) const
{
    card.IsAeroEnabled = IsAeroEnabled();
    card.DriverVersion = GetDriverVersion(client);
    card.CurrentRefreshRate = GetCurrentRefreshRate(client);
    card.CurrentResolution = GetCurrentResolution(client);
    card.UserConfig = GetUserConfig(client);
    card.ConfigErrorStatus = ConfigErrorName(static_cast<int32_t>(card.ConfigError));
    card.AvailabilityStatus = AvailabilityName(card.AvailabilityCode);
}

} // namespace orvel::shared::enumeration
