#pragma once

#include "Answers.h"

namespace orvel::recorder {

/// Where this is recorded: Windows' version, and the DLLs of the drivers with their paths and versions.
Json RecordOrigin();

} // namespace orvel::recorder
