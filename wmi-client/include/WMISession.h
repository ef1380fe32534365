#pragma once

#include <memory>

#include "WMIClient.h"

namespace orvel::shared::wmi {

class SessionMemory;

/// While it is open, the clients of its thread share one connection to a namespace, and WMI is asked each WQL text once: a
/// later query of the same text on the same namespace reads the rows that the first one received.
///
/// Failures are not remembered: after a failed connection, query or row the next client asks again. Rows are fetched when a
/// client first asks for them. Other threads' clients are not affected. Sessions nest; the innermost one serves.
/// To be destroyed on the thread that made it. Only the constructor throws, std::bad_alloc.
class ORVEL_WMI_CLIENT_API WMISession {
public:
    WMISession();
    WMISession(const WMISession&) = delete;
    WMISession& operator=(const WMISession&) = delete;
    /// Releases rows and connections, unless a client still holds them.
    ~WMISession();

private:
    std::unique_ptr<SessionMemory> memory;
};

} // namespace orvel::shared::wmi
