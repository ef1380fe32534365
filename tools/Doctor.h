#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Libraries.h"
#include "Report.h"

namespace orvel::tools {

/// How a thing that the library leans on is.
enum class CheckStatus {
    Found,     ///< as it should be
    NotNeeded, ///< missing, but this computer has no card that would need it
    Limits,    ///< not as it should be: some records, or some of their values, will be missing
    Stops,     ///< not as it should be: nothing can be enumerated
};

/// One thing that the library leans on.
struct Check {
    std::string Name; ///< stable, for scripts
    CheckStatus Status;
    std::string Path;    ///< "" where it has none
    std::string Version; ///< "" where it has none
    std::string Detail;  ///< what was seen, such as an error code
    std::string Cost;    ///< what its absence costs
    std::string Brings;  ///< what brings it
};

/// Looks at everything the library leans on. COM must be initialised; the library need not be loadable.
std::vector<Check> Diagnose(const LibraryLoad& load);

/// 0 all is well, 1 something limits the records, 2 nothing can be enumerated.
int DoctorStatus(const std::vector<Check>& checks);

std::string DoctorAsText(const std::vector<Check>& checks, const TextStyle& style);

/// One JSON object: `schema`, `status`, `checks` (objects with `name`, `status`, `path`, `version`, `detail`, `cost`,
/// `brings`).
std::string DoctorAsJson(const std::vector<Check>& checks);

} // namespace orvel::tools
