#pragma once

#include <cstdint>
#include <string>

#include "WMIClient.h"
#include "record/GraphicCardList.h"
#include "record/GraphicCardProperties.h"

namespace orvel::shared::enumeration {

/// Base class of the enumerators: the properties that all vendors read from WMI in the same way.
///
/// The readers take a client whose current row is a `Win32_VideoController`. A property that cannot be read is logged as a
/// warning and gives the reader's default; nothing is thrown.
class BaseGraphicCard {
public:
    virtual ~BaseGraphicCard() = default;

    /// Appends one record per adapter of the vendor. An exception ends the vendor's run.
    virtual void QueryInfo(GraphicCardList& list) = 0;

protected:
    /// "Availability"; 0 on failure, a code without a name.
    uint32_t GetAvailabilityCode(wmi::WMIClient& client) const;
    /// "ConfigManagerErrorCode"; 0 on failure.
    uint32_t GetConfigError(wmi::WMIClient& client) const;
    /// "ConfigManagerUserConfig"; false on failure.
    bool GetUserConfig(wmi::WMIClient& client) const;
    /// "CurrentHorizontalResolution" and "CurrentVerticalResolution" in pixels, joined by "x"; "" when either fails.
    std::string GetCurrentResolution(wmi::WMIClient& client) const;
    /// "CurrentRefreshRate" in hertz; 0 on failure.
    uint32_t GetCurrentRefreshRate(wmi::WMIClient& client) const;
    /// "DriverVersion"; "" on failure.
    std::string GetDriverVersion(wmi::WMIClient& client) const;
    /// "DriverDate" as WMI writes it; "" on failure.
    std::string GetDriverReleaseDate(wmi::WMIClient& client) const;
    /// "Name"; "" on failure.
    std::string GetAdapterName(wmi::WMIClient& client) const;
    /// "AdapterRAM" in whole MiB; 0 on failure.
    uint32_t GetAdapterRam(wmi::WMIClient& client) const;
    /// "Status"; "" on failure.
    std::string GetAdapterStatus(wmi::WMIClient& client) const;
    /// Whether desktop composition is on; false if the query fails, and before Windows Vista. Logs nothing.
    bool IsAeroEnabled() const;

    /// Reads the driver's and the display's properties, and the names of the codes in `card`. Throws
    /// std::out_of_range ("invalid unordered_map<K, T> key") for a code without a name.
    void ReadDriverAndDisplay(wmi::WMIClient& client, GraphicCardProperties& card) const;
};

} // namespace orvel::shared::enumeration
