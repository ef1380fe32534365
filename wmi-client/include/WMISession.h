#pragma once

#include <memory>

#include "WMIClient.h"

namespace orvel::shared::wmi {

class SessionMemory;

/// While a session is open, the clients of its thread share one connection per namespace, and each WQL text is sent once: a
/// later query with the same text on the same namespace returns the cached rows.
///
/// Failures are not cached: after a failed connection, query or row the next client tries again. Rows are fetched on first
/// use. Clients of other threads are not affected. Sessions nest; the innermost one applies. Destroy it on the thread that
/// created it. Only the constructor throws (std::bad_alloc).
class ORVEL_WMI_CLIENT_API WMISession {
public:
    WMISession();
    WMISession(const WMISession&) = delete;
    WMISession& operator=(const WMISession&) = delete;
    /// Releases rows and connections that no client uses.
    ~WMISession();

private:
    std::unique_ptr<SessionMemory> memory;
};

} // namespace orvel::shared::wmi
