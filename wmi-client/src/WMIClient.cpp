#include "WMIClient.h"

#include <wbemidl.h>
#include <wrl/client.h>

#include "BasicString.h"
#include "Connection.h"

namespace orvel::shared::wmi {

using Microsoft::WRL::ComPtr;

namespace {

std::string ToUtf8(const wchar_t* text, int units)
{
    const int bytes = ::WideCharToMultiByte(CP_UTF8, 0, text, units, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<size_t>(bytes), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text, units, utf8.data(), bytes, nullptr, nullptr);
    return utf8;
}

/// WMI hands an unsigned number out in a signed variant; only its CIM type tells that the sign bit is none.
bool IsUnsignedInSignedVariant(CIMTYPE type, const VARIANT& value)
{
    return value.vt == VT_I4 && (type == CIM_UINT8 || type == CIM_UINT16 || type == CIM_UINT32);
}

} // namespace

struct WMIClient::State {
    std::shared_ptr<const wmi::Connection> Connection;
    ComPtr<IEnumWbemClassObject> Rows;
    ComPtr<IWbemClassObject> Row;
};

WMIClient::WMIClient(const wchar_t* namespacePath) : state(std::make_unique<State>())
{
    state->Connection = Connection::To(namespacePath);
}

WMIClient::~WMIClient() = default;

long WMIClient::Query(const wchar_t* wql)
{
    state->Row.Reset();
    state->Rows.Reset();
    IWbemServices* const services = state->Connection->Services();
    if (!services) {
        return state->Connection->Status();
    }
    // Without WBEM_FLAG_RETURN_IMMEDIATELY: a bad text or class has to fail here, not at the first row.
    const HRESULT status = services->ExecQuery(BasicString(L"WQL"), BasicString(wql), WBEM_FLAG_FORWARD_ONLY, nullptr,
                                               state->Rows.ReleaseAndGetAddressOf());
    if (status != WBEM_S_NO_ERROR) {
        state->Rows.Reset();
        return status;
    }
    if (!state->Rows) {
        return WBEM_E_FAILED;
    }
    AllowImpersonation(state->Rows.Get());
    return 0;
}

bool WMIClient::GetNext()
{
    state->Row.Reset();
    if (!state->Rows) {
        return false;
    }
    ULONG returned = 0;
    const HRESULT status = state->Rows->Next(WBEM_INFINITE, 1, state->Row.GetAddressOf(), &returned);
    if (status != WBEM_S_NO_ERROR || returned == 0) {
        state->Row.Reset();
    }
    return state->Row != nullptr;
}

long WMIClient::GetVariantValue(const wchar_t* name, VARIANT* value)
{
    return state->Row ? state->Row->Get(name, 0, value, nullptr, nullptr) : static_cast<long>(WBEM_E_NOT_FOUND);
}

template <>
long WMIClient::GetValue<std::string>(const wchar_t* name, std::string& out)
{
    if (!state->Row) {
        return WBEM_E_NOT_FOUND;
    }
    detail::ScopedVariant value;
    CIMTYPE type = CIM_EMPTY;
    HRESULT status = state->Row->Get(name, 0, &value.value, &type, nullptr);
    if (status != WBEM_S_NO_ERROR) {
        return status;
    }
    if (IsUnsignedInSignedVariant(type, value.value)) {
        value.value.vt = VT_UI4; // the same 32 bits
    }
    if (status = ::VariantChangeType(&value.value, &value.value, 0, VT_BSTR); FAILED(status)) {
        return status;
    }
    out = ToUtf8(value.value.bstrVal, static_cast<int>(::SysStringLen(value.value.bstrVal)));
    return 0;
}

} // namespace orvel::shared::wmi
