#include "Connection.h"

#include <cstdint>
#include <mutex>
#include <vector>

#include "BasicString.h"
#include "Lock.h"
#include "ThisThread.h"

namespace orvel::shared::wmi {

using Microsoft::WRL::ComPtr;

namespace {

/// A connection and the thread that opened it: what one apartment opened is no other's to use.
struct OpenConnection {
    uint64_t Thread;
    std::weak_ptr<const Connection> Shared; // belongs to its users, so that nothing of COM outlives the last of them
};

Lock openConnectionsLock;
std::vector<OpenConnection> openConnections; // not thread_local: a thread's destructors keep the DLL loaded until its end

/// Lets WMI act for the caller. An in-process object has no proxy and refuses, which is harmless.
void AllowImpersonation(IUnknown* proxy)
{
    ::CoSetProxyBlanket(proxy, RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr, RPC_C_AUTHN_LEVEL_CALL,
                        RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE);
}

HRESULT Connect(const std::wstring& namespacePath, ComPtr<IWbemServices>& services)
{
    ComPtr<IWbemLocator> locator;
    HRESULT status = ::CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_IWbemLocator,
                                        reinterpret_cast<void**>(locator.GetAddressOf()));
    if (FAILED(status)) {
        return status;
    }
    // With the flag it waits two minutes at most, without it for ever.
    status = locator->ConnectServer(BasicString(namespacePath.c_str()), nullptr, nullptr, nullptr,
                                    WBEM_FLAG_CONNECT_USE_MAX_WAIT, nullptr, nullptr, services.GetAddressOf());
    if (status != WBEM_S_NO_ERROR) {
        services.Reset();
        return status;
    }
    if (!services) {
        return WBEM_E_FAILED;
    }
    AllowImpersonation(services.Get());
    return WBEM_S_NO_ERROR;
}

/// The thread's open connection to the namespace, or null.
std::shared_ptr<const Connection> FindOpen(uint64_t thread, const std::wstring& path)
{
    const std::lock_guard guard(openConnectionsLock);
    std::erase_if(openConnections, [](const OpenConnection& open) { return open.Shared.expired(); });
    for (const OpenConnection& open : openConnections) {
        auto connection = open.Thread == thread ? open.Shared.lock() : nullptr;
        if (connection && connection->Path() == path) {
            return connection;
        }
    }
    return nullptr;
}

} // namespace

Connection::Connection(const std::wstring& namespacePath) : path(namespacePath), status(Connect(namespacePath, services)) {}

std::shared_ptr<const Connection> Connection::To(const std::wstring& namespacePath)
{
    if (auto open = FindOpen(ThisThread(), namespacePath)) {
        return open;
    }
    auto connection = std::make_shared<const Connection>(namespacePath);
    if (connection->Services()) {
        const std::lock_guard guard(openConnectionsLock);
        openConnections.push_back({ThisThread(), connection});
    }
    return connection;
}

std::shared_ptr<ResultSet> Connection::Send(const wchar_t* wql) const
{
    if (!services) {
        return std::make_shared<ResultSet>(status, nullptr);
    }
    // WMI returns at once and works on its own threads: only then can the wait for the answer have a limit.
    ComPtr<IEnumWbemClassObject> rows;
    const HRESULT sent =
        services->ExecQuery(BasicString(L"WQL"), BasicString(wql), WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY,
                            nullptr, rows.GetAddressOf());
    if (sent != WBEM_S_NO_ERROR) {
        return std::make_shared<ResultSet>(sent, nullptr);
    }
    if (!rows) {
        return std::make_shared<ResultSet>(WBEM_E_FAILED, nullptr);
    }
    AllowImpersonation(rows.Get());
    return std::make_shared<ResultSet>(WBEM_S_NO_ERROR, std::move(rows));
}

} // namespace orvel::shared::wmi
