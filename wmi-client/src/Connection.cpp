#include "Connection.h"

#include <vector>

#include "BasicString.h"

namespace orvel::shared::wmi {

using Microsoft::WRL::ComPtr;

namespace {

/// The open connections of this thread: what one apartment opened is no other's to use. They belong to their users, so that
/// nothing of COM outlives the last of them.
thread_local std::vector<std::weak_ptr<const Connection>> openConnections;

HRESULT Connect(const wchar_t* namespacePath, ComPtr<IWbemServices>& services)
{
    ComPtr<IWbemLocator> locator;
    HRESULT status = ::CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_IWbemLocator,
                                        reinterpret_cast<void**>(locator.GetAddressOf()));
    if (FAILED(status)) {
        return status;
    }
    status = locator->ConnectServer(BasicString(namespacePath), nullptr, nullptr, nullptr, 0, nullptr, nullptr,
                                    services.GetAddressOf());
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

} // namespace

Connection::Connection(const wchar_t* namespacePath)
    : path(namespacePath ? namespacePath : L""), status(Connect(namespacePath, services))
{}

std::shared_ptr<const Connection> Connection::To(const wchar_t* namespacePath)
{
    std::erase_if(openConnections, [](const auto& connection) { return connection.expired(); });
    for (const auto& known : openConnections) {
        auto connection = known.lock(); // null where another thread has just dropped the last client
        if (connection && namespacePath && connection->path == namespacePath) {
            return connection;
        }
    }
    auto connection = std::make_shared<const Connection>(namespacePath);
    if (connection->Services()) {
        openConnections.push_back(connection);
    }
    return connection;
}

void AllowImpersonation(IUnknown* proxy)
{
    ::CoSetProxyBlanket(proxy, RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr, RPC_C_AUTHN_LEVEL_CALL,
                        RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE);
}

} // namespace orvel::shared::wmi
