// Replaces orvel-shared-wmi-client.dll: one row with one adapter of each vendor. Reading a text writes something and then
// fails, except for the properties without which there would be no record.

#include <cstring>
#include <string>

#include "WMIClient.h"
#include "WMISession.h"

namespace orvel::shared::wmi {

class SessionMemory {};

WMISession::WMISession() = default;

WMISession::~WMISession() = default;

struct WMIClient::State {
    std::wstring Query;
    int RowsLeft = 0;
};

WMIClient::WMIClient(const wchar_t*) : state(std::make_unique<State>()) {}

WMIClient::~WMIClient() = default;

void WMIClient::Prepare(const wchar_t*) {}

long WMIClient::Query(const wchar_t* wql)
{
    state->Query = wql;
    state->RowsLeft = 1;
    return 0;
}

bool WMIClient::GetNext()
{
    return state->RowsLeft-- > 0;
}

long WMIClient::GetVariantValue(const wchar_t* name, VARIANT* value)
{
    const std::wstring property = name;
    value->vt = VT_UI4;
    value->ulVal = property == L"Availability" ? 3 : property == L"SMBIOSMemoryType" ? 26 : 0;
    return 0;
}

template <>
long WMIClient::GetValue<std::string>(const wchar_t* name, std::string& out)
{
    const std::wstring property = name;
    const bool isIntel = state->Query.find(L"VEN_8086") != std::wstring::npos;
    if (isIntel && property == L"PNPDeviceID") {
        out = "PCI\\VEN_8086&DEV_5917&SUBSYS_225D17AA&REV_07\\3&11583659&0&10";
        return 0;
    }
    if (isIntel && property == L"Name") {
        out = "Intel(R) UHD Graphics 770";
        return 0;
    }
    if (isIntel && property == L"AdapterRAM") {
        out = "1073741824";
        return 0;
    }
    out = "rubbish";
    return property == L"CurrentHorizontalResolution" ? 0 : -1;
}

} // namespace orvel::shared::wmi
