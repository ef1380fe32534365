#include "vendors/example/Example.h"

#include "formulas/PnpDeviceId.h"
#include "formulas/StatusNames.h"
#include "platform/Log.h"
#include "system/SystemMemory.h"
#include "system/WmiNamespace.h"
#include "system/WmiText.h"

namespace orvel::shared::enumeration {

void Example::QueryInfo(GraphicCardList& list)
{
    wmi::WMIClient row(wmiNamespace);
    if (row.Query(L"SELECT * FROM Win32_VideoController WHERE PNPDeviceID LIKE 'PCI%VEN_FFFE%'") != 0) {
        PLOGE << "Failed to get Win32_VideoController fields from WMI";
        return;
    }
    while (row.GetNext()) {
        list.Append(MakeRecord(ReadAdapter(row)));
    }
}

GraphicCardProperties Example::ReadAdapter(wmi::WMIClient& row) const
{
    GraphicCardProperties card;
    card.Manufacturer = "Example";
    std::string pnpDeviceId;
    if (ReadText(row, L"PNPDeviceID", pnpDeviceId)) {
        const PnpDeviceId id = ParsePnpDeviceId(pnpDeviceId);
        card.DeviceId = id.Device;
        card.SubsystemId = id.Subsystem;
    }
    card.AvailabilityCode = GetAvailabilityCode(row);
    card.ConfigError = GetConfigError(row);
    card.AdapterStatus = GetAdapterStatus(row);
    card.AdapterRam = GetAdapterRam(row);
    card.AdapterName = GetAdapterName(row);
    card.CardName = card.AdapterName;
    card.DriverReleaseDate = GetDriverReleaseDate(row);
    card.MemoryType = MemoryTypeName(GetMemoryType());
    ReadDriverAndDisplay(row, card);
    return card;
}

} // namespace orvel::shared::enumeration
