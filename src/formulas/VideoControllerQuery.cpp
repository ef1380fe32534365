#include "formulas/VideoControllerQuery.h"

namespace orvel::shared::enumeration {

std::string NvidiaAdapterQuery(const std::string& deviceId)
{
    return "SELECT * FROM Win32_VideoController WHERE PNPDeviceID LIKE 'PCI%VEN_10DE&DEV_" + deviceId + "%'";
}

std::string AmdAdapterQuery(const std::string& name)
{
    return "SELECT * FROM Win32_VideoController WHERE PNPDeviceID LIKE 'PCI%VEN_1002%' AND Name = '" + name + "'";
}

} // namespace orvel::shared::enumeration
