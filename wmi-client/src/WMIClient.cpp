#include "WMIClient.h"

#include <wbemidl.h>
#include <wrl/client.h>

#include "Connection.h"
#include "ResultSet.h"
#include "SessionMemory.h"
#include "platform/Wmi.h"

namespace orvel::shared::wmi {

using Microsoft::WRL::ComPtr;

struct WMIClient::State {
    std::wstring Path;
    std::shared_ptr<const Connection> Connected; ///< null before the first query that is not cached
    std::shared_ptr<ResultSet> Rows;
    std::size_t NextRow = 0;
    ComPtr<IWbemClassObject> Row;

    /// Sends a query whose result is not cached.
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
    if (state->Connected->Services()) { // a failed connection is not shared
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
    return state->Row ? enumeration::ReadAsText(*state->Row.Get(), name, out) : static_cast<long>(WBEM_E_NOT_FOUND);
}

} // namespace orvel::shared::wmi
