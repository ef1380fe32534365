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
    wmi::WMIClient client(wmiNamespace);
    if (client.Query(L"SELECT * FROM Win32_VideoController WHERE PNPDeviceID LIKE 'PCI%VEN_FFFE%'") != 0) {
        PLOGE << "Failed to get Win32_VideoController fields from WMI";
        return;
    }
    while (client.GetNext()) {
        list.Append(MakeRecord(ReadAdapter(client)));
    }
}

GraphicCardProperties Example::ReadAdapter(wmi::WMIClient& client) const
{
    GraphicCardProperties card;
    card.Manufacturer = "Example";
    std::string pnpDeviceId;
    if (ReadText(client, L"PNPDeviceID", pnpDeviceId)) {
        const PnpDeviceId id = ParsePnpDeviceId(pnpDeviceId);
        card.DeviceId = id.Device;
        card.SubsystemId = id.Subsystem;
    }
    card.AvailabilityCode = GetAvailabilityCode(client);
    card.ConfigError = GetConfigError(client);
    card.AdapterStatus = GetAdapterStatus(client);
    card.AdapterRam = GetAdapterRam(client);
    card.AdapterName = GetAdapterName(client);
    card.CardName = card.AdapterName;
    card.DriverReleaseDate = GetDriverReleaseDate(client);
    card.MemoryType = MemoryTypeName(GetMemoryType());
    ReadDriverAndDisplay(client, card);
    return card;
}

} // namespace orvel::shared::enumeration
