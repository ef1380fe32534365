#pragma once

#include <set>
#include <string>

#include "Answers.h"

namespace orvel::recorder {

/// Where this is recorded: Windows' version, and the DLLs of the drivers with their paths and versions,
/// except those that cannot be loaded without an end.
Json RecordOrigin(const std::set<std::string>& hangingDlls);

} // namespace orvel::recorder
