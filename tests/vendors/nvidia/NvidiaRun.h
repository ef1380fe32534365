#pragma once

#include "support/Enumerated.h"

namespace orvel::tests {

/// The desktop of machines/nvidia-desktop.json with a GPU that answers everything: memory, ECC, SLI and a serial number too.
Json FullDesktop();

/// The record of that desktop with some fields of another value.
Json FullDesktopCard(const Json& otherFields = Json::object());

Json& Gpu(Json& machine, size_t index = 0);
Json& Device(Json& machine, size_t index = 0);

/// Enumerates on a machine; of the log, the lines before AMD's. Nothing may stay alive.
Enumerated EnumerateNvidia(const Json& machine);

/// NVIDIA's run ended with this exception as its last line, without a record.
void CheckNvidiaEnds(const Json& machine, const std::string& reason);

/// A run's line about the exception that ended it.
std::string EndLine(const std::string& reason);

/// The lines of a session with NVAPI and NVML and, between them, those of the run.
LogLines WithSession(const LogLines& lines);

} // namespace orvel::tests
