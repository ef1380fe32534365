#include "Connection.h"

#include <cstdint>
#include <mutex>
#include <vector>

#include "Lock.h"
#include "ThisThread.h"
#include "platform/Wmi.h"

namespace orvel::shared::wmi {

using Microsoft::WRL::ComPtr;

namespace {

/// A connection and the thread that opened it: another apartment must not use it.
struct OpenConnection {
    uint64_t Thread;
    std::weak_ptr<const Connection> Shared; // owned by its users, so that no COM object outlives them
};

Lock openConnectionsLock;
std::vector<OpenConnection> openConnections; // not thread_local: a thread's destructors keep the DLL loaded until its end

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

Connection::Connection(const std::wstring& namespacePath)
    : path(namespacePath), status(enumeration::ConnectToWmi(namespacePath.c_str(), services))
{}

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
    ComPtr<IEnumWbemClassObject> rows;
    const HRESULT sent = enumeration::SendQuery(*services.Get(), wql, rows);
    return std::make_shared<ResultSet>(sent, std::move(rows));
}

} // namespace orvel::shared::wmi
