#include "SessionMemory.h"

#include <algorithm>
#include <mutex>

#include "Lock.h"
#include "ThisThread.h"

namespace orvel::shared::wmi {

namespace {

Lock openSessionsLock;
SessionMemory* newestSession = nullptr; // not thread_local: a thread's destructors keep the DLL loaded until its end

} // namespace

SessionMemory* SessionMemory::OfThisThread()
{
    const uint64_t thread = ThisThread();
    const std::lock_guard guard(openSessionsLock);
    SessionMemory* session = newestSession;
    while (session && session->thread != thread) {
        session = session->older;
    }
    return session;
}

SessionMemory::SessionMemory() : thread(ThisThread())
{
    const std::lock_guard guard(openSessionsLock);
    older = newestSession;
    newestSession = this;
}

SessionMemory::~SessionMemory()
{
    const std::lock_guard guard(openSessionsLock);
    SessionMemory** session = &newestSession;
    while (*session != this) {
        session = &(*session)->older;
    }
    *session = older;
}

std::shared_ptr<ResultSet> SessionMemory::Find(const std::wstring& namespacePath, const std::wstring& wql) const
{
    const auto answer = answers.find({namespacePath, wql});
    return answer == answers.end() ? nullptr : answer->second;
}

void SessionMemory::Remember(const std::wstring& namespacePath, const std::wstring& wql, std::shared_ptr<ResultSet> rows)
{
    answers.insert_or_assign({namespacePath, wql}, std::move(rows));
}

void SessionMemory::Forget(const std::shared_ptr<ResultSet>& rows)
{
    std::erase_if(answers, [&rows](const auto& answer) { return answer.second == rows; });
}

void SessionMemory::Keep(std::shared_ptr<const Connection> connection)
{
    if (std::find(connections.begin(), connections.end(), connection) == connections.end()) {
        connections.push_back(std::move(connection));
    }
}

} // namespace orvel::shared::wmi
