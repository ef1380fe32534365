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

/// Why a vendor has no records.
struct VendorState {
    struct Word {
        const char* Name;    ///< stable, for scripts; "ok" where nothing that was looked at keeps the records away
        const char* Meaning; ///< the same as a sentence
    };
    std::string Vendor;
    Word State;
};

struct Diagnosis {
    std::vector<Check> Checks;
    std::vector<VendorState> Vendors;
};

/// Looks at everything the library leans on. COM must be initialised; the library need not be loadable.
Diagnosis Diagnose(const LibraryLoad& load);

/// 0 all is well, 1 something limits the records, 2 nothing can be enumerated.
int DoctorStatus(const std::vector<Check>& checks);

std::string DoctorAsText(const Diagnosis& diagnosis, const TextStyle& style);

/// One JSON object: `schema`, `status`, `checks` (objects with `name`, `status`, `path`, `version`, `detail`, `cost`,
/// `brings`), `vendors` (objects with `name`, `status`, `meaning`).
std::string DoctorAsJson(const Diagnosis& diagnosis);

} // namespace orvel::tools
