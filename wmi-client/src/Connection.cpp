#include "Connection.h"

#include <atomic>
#include <cstdint>
#include <mutex>
#include <vector>

#include "BasicString.h"

namespace orvel::shared::wmi {

using Microsoft::WRL::ComPtr;

namespace {

/// A connection and the thread that opened it: what one apartment opened is no other's to use.
struct OpenConnection {
    uint64_t Thread;
    std::weak_ptr<const Connection> Shared; // belongs to its users, so that nothing of COM outlives the last of them
};

std::mutex openConnectionsMutex;
std::vector<OpenConnection> openConnections; // not thread_local: a thread's destructors keep the DLL loaded until its end

/// A number that no other thread has or had, unlike the system's, which come again.
uint64_t ThisThread()
{
    static std::atomic<uint64_t> threads;
    thread_local uint64_t number = 0;
    if (number == 0) {
        number = ++threads;
    }
    return number;
}

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

/// The thread's open connection to the namespace, or null.
std::shared_ptr<const Connection> FindOpen(uint64_t thread, const std::wstring& path)
{
    const std::lock_guard lock(openConnectionsMutex);
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

Connection::Connection(const wchar_t* namespacePath)
    : path(namespacePath ? namespacePath : L""), status(Connect(namespacePath, services))
{}

std::shared_ptr<const Connection> Connection::To(const wchar_t* namespacePath)
{
    if (auto open = FindOpen(ThisThread(), namespacePath ? namespacePath : L"")) {
        return open;
    }
    auto connection = std::make_shared<const Connection>(namespacePath);
    if (connection->Services()) {
        const std::lock_guard lock(openConnectionsMutex);
        openConnections.push_back({ThisThread(), connection});
    }
    return connection;
}

void AllowImpersonation(IUnknown* proxy)
{
    ::CoSetProxyBlanket(proxy, RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr, RPC_C_AUTHN_LEVEL_CALL,
                        RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE);
}

} // namespace orvel::shared::wmi
