#pragma once

#include <string>

#include "drivers/HandleTable.h"
#include "machine/NvapiModel.h"

namespace orvel::simulation {

/// Whether NVAPI is initialised; for a call that needs it. One that comes outside a session is a violation.
bool IsInNvapiSession(const std::string& call);

/// Begins a session, or counts it where there is one.
void BeginNvapiSession();

/// Ends what BeginNvapiSession began. With the last end all handles are dead.
void EndNvapiSession();

/// Ends all sessions.
void ResetNvapiSessions();

/// The GPUs' handles in the session.
HandleTable<NvapiGpuModel>& NvapiHandles();

} // namespace orvel::simulation
