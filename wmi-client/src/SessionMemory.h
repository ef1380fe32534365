#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Connection.h"
#include "ResultSet.h"

namespace orvel::shared::wmi {

/// The cache of an open session for the clients of its thread.
class SessionMemory {
public:
    /// The cache of the innermost session that is open on this thread; null without one.
    static SessionMemory* OfThisThread();

    SessionMemory();
    SessionMemory(const SessionMemory&) = delete;
    SessionMemory& operator=(const SessionMemory&) = delete;
    ~SessionMemory();

    /// The rows of an earlier query of the same text, or null.
    std::shared_ptr<ResultSet> Find(const std::wstring& namespacePath, const std::wstring& wql) const;
    void Remember(const std::wstring& namespacePath, const std::wstring& wql, std::shared_ptr<ResultSet> rows);
    void Forget(const std::shared_ptr<ResultSet>& rows);

    /// Keeps a connection open as long as the session.
    void Keep(std::shared_ptr<const Connection> connection);

private:
    uint64_t thread;
    SessionMemory* older; ///< the previously opened session, of any thread; null for none
    std::vector<std::shared_ptr<const Connection>> connections;
    std::map<std::pair<std::wstring, std::wstring>, std::shared_ptr<ResultSet>> answers; ///< by namespace and WQL text
};

} // namespace orvel::shared::wmi
