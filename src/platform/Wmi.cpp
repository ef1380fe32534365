#include "platform/Wmi.h"

#include "platform/Handles.h"
#include "platform/TextEncoding.h"

namespace orvel::shared::enumeration {

using Microsoft::WRL::ComPtr;

namespace {

constexpr LONG longestWaitMilliseconds = 120'000; // as long as ConnectServer waits at most

/// Lets WMI impersonate the caller. Fails for an in-process object, which has no proxy; that is harmless.
void AllowImpersonation(IUnknown* proxy)
{
    ::CoSetProxyBlanket(proxy, RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr, RPC_C_AUTHN_LEVEL_CALL,
                        RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE);
}

/// The status of a call that returns an object; clears the object if the call fails.
template <typename Interface>
HRESULT Checked(HRESULT status, ComPtr<Interface>& object)
{
    if (status != WBEM_S_NO_ERROR) {
        object.Reset();
        return status;
    }
    return object ? status : static_cast<HRESULT>(WBEM_E_FAILED);
}

/// WMI returns an unsigned number in a signed variant; only its CIM type shows that it has no sign bit.
bool IsUnsignedInSignedVariant(CIMTYPE type, const VARIANT& value)
{
    return value.vt == VT_I4 && (type == CIM_UINT8 || type == CIM_UINT16 || type == CIM_UINT32);
}

} // namespace

HRESULT ConnectToWmi(const wchar_t* namespacePath, ComPtr<IWbemServices>& services)
{
    services.Reset();
    ComPtr<IWbemLocator> locator;
    HRESULT status = ::CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_IWbemLocator,
                                        reinterpret_cast<void**>(locator.GetAddressOf()));
    if (FAILED(status)) {
        return status;
    }
    // With the flag it waits at most two minutes, otherwise forever.
    status = locator->ConnectServer(BasicString(::SysAllocString(namespacePath)).get(), nullptr, nullptr, nullptr,
                                    WBEM_FLAG_CONNECT_USE_MAX_WAIT, nullptr, nullptr, services.GetAddressOf());
    if (status = Checked(status, services); status == WBEM_S_NO_ERROR) {
        AllowImpersonation(services.Get());
    }
    return status;
}

HRESULT SendQuery(IWbemServices& services, const wchar_t* wql, ComPtr<IEnumWbemClassObject>& rows)
{
    // WMI returns at once and works on its own threads: only then can the wait for the answer have a limit.
    rows.Reset();
    const BasicString language(::SysAllocString(L"WQL"));
    const BasicString text(::SysAllocString(wql));
    HRESULT status = services.ExecQuery(language.get(), text.get(), WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY,
                                        nullptr, rows.GetAddressOf());
    if (status = Checked(status, rows); status == WBEM_S_NO_ERROR) {
        AllowImpersonation(rows.Get());
    }
    return status;
}

HRESULT FetchRow(IEnumWbemClassObject& rows, ComPtr<IWbemClassObject>& row)
{
    row.Reset();
    ULONG returned = 0;
    const HRESULT status = rows.Next(longestWaitMilliseconds, 1, row.GetAddressOf(), &returned);
    if (status == WBEM_S_NO_ERROR && returned > 0 && row) {
        return status;
    }
    row.Reset();
    return status == WBEM_S_NO_ERROR ? static_cast<HRESULT>(WBEM_S_FALSE) : status;
}

HRESULT ReadAsText(IWbemClassObject& row, const wchar_t* property, std::string& text)
{
    VARIANT value{}; // VT_EMPTY
    const ClearedVariant cleared(&value);
    CIMTYPE type = CIM_EMPTY;
    HRESULT status = row.Get(property, 0, &value, &type, nullptr);
    if (status != WBEM_S_NO_ERROR) {
        return status;
    }
    if (IsUnsignedInSignedVariant(type, value)) {
        value.vt = VT_UI4; // the same 32 bits
    }
    if (status = ::VariantChangeType(&value, &value, 0, VT_BSTR); FAILED(status)) {
        return status;
    }
    text = ToUtf8({value.bstrVal, ::SysStringLen(value.bstrVal)});
    return WBEM_S_NO_ERROR;
}

} // namespace orvel::shared::enumeration
