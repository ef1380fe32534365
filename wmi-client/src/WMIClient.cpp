#include "WMIClient.h"

#include <wbemidl.h>
#include <wrl/client.h>

#include "Connection.h"
#include "ResultSet.h"
#include "SessionMemory.h"

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
    std::wstring Path;
    std::shared_ptr<const Connection> Connected; ///< null before the first query that has to ask WMI
    std::shared_ptr<ResultSet> Rows;
    std::size_t NextRow = 0;
    ComPtr<IWbemClassObject> Row;

    /// Sends a query that no earlier one has answered.
    std::shared_ptr<ResultSet> Send(const wchar_t* wql, SessionMemory* session);
};

std::shared_ptr<ResultSet> WMIClient::State::Send(const wchar_t* wql, SessionMemory* session)
{
    if (!Connected) {
        Connected = Connection::To(Path);
    }
    if (session && Connected->Services()) {
        session->Keep(Connected);
    }
    return Connected->Send(wql);
}

WMIClient::WMIClient(const wchar_t* namespacePath) : state(std::make_unique<State>())
{
    state->Path = namespacePath ? namespacePath : L"";
}

WMIClient::~WMIClient() = default;

void WMIClient::Prepare(const wchar_t* wql)
{
    SessionMemory* const session = SessionMemory::OfThisThread();
    if (!session || session->Find(state->Path, wql)) {
        return;
    }
    auto rows = state->Send(wql, session);
    if (state->Connected->Services()) { // a failed connection is this client's alone
        session->Remember(state->Path, wql, std::move(rows));
    }
}

long WMIClient::Query(const wchar_t* wql)
{
    state->Row.Reset();
    state->Rows.reset();
    SessionMemory* const session = SessionMemory::OfThisThread();
    auto rows = session ? session->Find(state->Path, wql) : nullptr;
    if (!rows) {
        rows = state->Send(wql, session);
    }
    const HRESULT status = rows->Await();
    if (session && status == 0) {
        session->Remember(state->Path, wql, rows);
    } else if (session) {
        session->Forget(rows);
    }
    if (status == 0) {
        state->Rows = std::move(rows);
        state->NextRow = 0;
    }
    return status;
}

bool WMIClient::GetNext()
{
    state->Row.Reset();
    if (!state->Rows) {
        return false;
    }
    state->Row = state->Rows->At(state->NextRow);
    if (state->Row) {
        ++state->NextRow;
    } else if (SessionMemory* const session = SessionMemory::OfThisThread(); session && state->Rows->HasFailed()) {
        session->Forget(state->Rows);
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
