#include "FloorWmi.h"

#include <oleauto.h>

namespace orvel::bench {

using Microsoft::WRL::ComPtr;

namespace {

void AllowImpersonation(IUnknown* proxy)
{
    ::CoSetProxyBlanket(proxy, RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr, RPC_C_AUTHN_LEVEL_CALL,
                        RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE);
}

ComPtr<IWbemServices> Connect()
{
    ComPtr<IWbemLocator> locator;
    ::CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_IWbemLocator,
                       reinterpret_cast<void**>(locator.GetAddressOf()));
    ComPtr<IWbemServices> services;
    const BSTR path = ::SysAllocString(L"\\\\.\\root\\cimv2");
    locator->ConnectServer(path, nullptr, nullptr, nullptr, WBEM_FLAG_CONNECT_USE_MAX_WAIT, nullptr, nullptr,
                           services.GetAddressOf());
    ::SysFreeString(path);
    AllowImpersonation(services.Get());
    return services;
}

constexpr wchar_t memoryTypes[] = L"SELECT SMBIOSMemoryType FROM Win32_PhysicalMemory";
constexpr wchar_t speeds[] = L"SELECT Speed FROM Win32_PhysicalMemory";
constexpr wchar_t totalWidths[] = L"SELECT TotalWidth FROM Win32_PhysicalMemory";

FloorRows AskModules(FloorWmi& wmi, const wchar_t* wql)
{
    wmi.Ask(wql);
    for (const wchar_t* other : {memoryTypes, speeds, totalWidths}) {
        wmi.Ask(other);
    }
    return FloorRows(wmi, wql);
}

void ReadFirst(FloorRows modules, const wchar_t* property)
{
    if (modules.Next()) {
        modules.Read(property);
    }
}

} // namespace

IWbemClassObject* FloorAnswer::At(size_t index)
{
    while (index >= Rows.size() && !IsWhole) {
        ComPtr<IWbemClassObject> row;
        ULONG returned = 0;
        IsWhole = Source->Next(120'000, 1, row.GetAddressOf(), &returned) != WBEM_S_NO_ERROR;
        if (!IsWhole) {
            Rows.push_back(std::move(row));
        }
    }
    return index < Rows.size() ? Rows[index].Get() : nullptr;
}

FloorAnswer& FloorWmi::Ask(const wchar_t* wql)
{
    if (!services) {
        services = Connect();
    }
    const auto [answer, isNew] = answers.try_emplace(wql);
    if (isNew) {
        const BSTR language = ::SysAllocString(L"WQL");
        const BSTR text = ::SysAllocString(wql);
        services->ExecQuery(language, text, WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY, nullptr,
                            answer->second.Source.GetAddressOf());
        ::SysFreeString(text);
        ::SysFreeString(language);
        AllowImpersonation(answer->second.Source.Get());
    }
    return answer->second;
}

FloorRows::FloorRows(FloorWmi& wmi, const wchar_t* wql) : answer(&wmi.Ask(wql))
{
    answer->At(0); // the answer has come when its first row has
}

bool FloorRows::Next()
{
    row = answer->At(next++);
    return row != nullptr;
}

void FloorRows::Read(const wchar_t* property) const
{
    Value value;
    Read(property, value);
}

void FloorRows::Read(const wchar_t* property, Value& value) const
{
    row->Get(property, 0, value.Receive(), nullptr, nullptr);
}

void ReadMemoryType(FloorWmi& wmi)
{
    ReadFirst(FloorRows(wmi, memoryTypes), L"SMBIOSMemoryType");
}

void ReadTotalWidth(FloorWmi& wmi)
{
    ReadFirst(AskModules(wmi, totalWidths), L"TotalWidth");
}

void ReadMemorySpeed(FloorWmi& wmi)
{
    FloorRows modules = AskModules(wmi, speeds);
    while (modules.Next()) {
        modules.Read(L"Speed");
    }
}

} // namespace orvel::bench
