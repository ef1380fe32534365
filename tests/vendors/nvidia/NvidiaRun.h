#pragma once

#include "support/Enumerated.h"

namespace orvel::tests {

/// The desktop of machines/nvidia-desktop.json with a GPU that supports everything, including memory, ECC, SLI and a serial
/// number.
Json FullDesktop();

/// The record of that desktop, with other values in some fields.
Json FullDesktopCard(const Json& otherFields = Json::object());

Json& Gpu(Json& machine, size_t index = 0);
Json& Device(Json& machine, size_t index = 0);

/// Enumerates, and removes AMD's lines from the log. Checks that nothing stays alive.
Enumerated EnumerateNvidia(const Json& machine);

/// Checks that NVIDIA's run ends with this exception as its last line, and without a record.
void CheckNvidiaEnds(const Json& machine, const std::string& reason);

/// The log line for an exception that ends a run.
std::string EndLine(const std::string& reason);

/// The lines of a run, enclosed by those of the sessions with NVAPI and NVML.
LogLines WithSession(const LogLines& lines);

} // namespace orvel::tests
