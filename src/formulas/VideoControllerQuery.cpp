#include "formulas/VideoControllerQuery.h"

namespace orvel::shared::enumeration {

std::string AdapterQuery(const std::string& vendorId)
{
    return "SELECT * FROM Win32_VideoController WHERE PNPDeviceID LIKE 'PCI%VEN_" + vendorId + "%'";
}

std::string IntelAdapterQuery()
{
    return AdapterQuery("8086");
}

std::string NvidiaAdapterQuery(const std::string& deviceId)
{
    return AdapterQuery("10DE&DEV_" + deviceId);
}

std::string AmdAdapterQuery(const std::string& name)
{
    return AdapterQuery("1002") + " AND Name = '" + name + "'";
}

} // namespace orvel::shared::enumeration
