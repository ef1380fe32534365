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

void ReadFirst(IWbemServices& services, const wchar_t* wql, const wchar_t* property)
{
    FloorRows modules(services, wql);
    if (modules.Next()) {
        modules.Read(property);
    }
}

} // namespace

FloorRows::FloorRows(IWbemServices& services, const wchar_t* wql)
{
    const BSTR language = ::SysAllocString(L"WQL");
    const BSTR text = ::SysAllocString(wql);
    services.ExecQuery(language, text, WBEM_FLAG_FORWARD_ONLY, nullptr, rows.GetAddressOf());
    ::SysFreeString(text);
    ::SysFreeString(language);
    AllowImpersonation(rows.Get());
}

bool FloorRows::Next()
{
    row.Reset();
    ULONG returned = 0;
    return rows->Next(WBEM_INFINITE, 1, row.GetAddressOf(), &returned) == WBEM_S_NO_ERROR;
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

ComPtr<IWbemServices> ConnectFloor()
{
    ComPtr<IWbemLocator> locator;
    ::CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_IWbemLocator,
                       reinterpret_cast<void**>(locator.GetAddressOf()));
    ComPtr<IWbemServices> services;
    const BSTR path = ::SysAllocString(L"\\\\.\\root\\cimv2");
    locator->ConnectServer(path, nullptr, nullptr, nullptr, 0, nullptr, nullptr, services.GetAddressOf());
    ::SysFreeString(path);
    AllowImpersonation(services.Get());
    return services;
}

void ReadMemoryType(IWbemServices& services)
{
    ReadFirst(services, L"SELECT SMBIOSMemoryType FROM Win32_PhysicalMemory", L"SMBIOSMemoryType");
}

void ReadTotalWidth(IWbemServices& services)
{
    ReadFirst(services, L"SELECT TotalWidth FROM Win32_PhysicalMemory", L"TotalWidth");
}

void ReadMemorySpeed(IWbemServices& services)
{
    FloorRows modules(services, L"SELECT Speed FROM Win32_PhysicalMemory");
    while (modules.Next()) {
        modules.Read(L"Speed");
    }
}

} // namespace orvel::bench
