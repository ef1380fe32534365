#pragma once

#include <cstdint>
#include <string>

#include <windows.h>

namespace orvel::simulation {

// The calls of the loader and the registry that Windows answers. Only a recording lists them: it needs all that a program
// asks of the platform, while the trace has what the machine answers.

/// Lets these calls lead to the recording.
void PutRecordedCallsInPlace();

/// Lets them lead to Windows again.
void TakeRecordedCallsAway();

/// Records a call on a registry key, such as "RegQueryValueExW NAME". For calls whose imports lead elsewhere already.
void RecordKeyCall(HKEY key, const std::string& call, uint64_t number = 0);

} // namespace orvel::simulation
