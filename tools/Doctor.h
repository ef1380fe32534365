#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Libraries.h"
#include "Report.h"

namespace orvel::tools {

/// The state of a dependency of the library.
enum class CheckStatus {
    Found,     ///< present and usable
    NotNeeded, ///< missing, but no card of this computer needs it
    Limits,    ///< missing or unusable: some records or values are missing
    Stops,     ///< missing or unusable: nothing can be enumerated
};

/// A dependency of the library.
struct Check {
    std::string Name; ///< stable, for scripts
    CheckStatus Status;
    std::string Path;    ///< "" where it has none
    std::string Version; ///< "" where it has none
    std::string Detail;  ///< such as an error code
    std::string Impact;  ///< if it is missing
    std::string ProvidedBy;
};

/// Why a vendor has no records.
struct VendorState {
    struct Word {
        const char* Name;    ///< stable, for scripts; "ok" where no check found a reason for missing records
        const char* Meaning; ///< the same as a sentence
    };
    std::string Vendor;
    Word State;
};

struct Diagnosis {
    std::vector<Check> Checks;
    std::vector<VendorState> Vendors;
};

/// Checks everything the library depends on. COM must be initialised; the library need not be loadable.
Diagnosis Diagnose(const LibraryLoad& load);

/// 0 nothing is missing, 1 something limits the records, 2 nothing can be enumerated.
int DoctorStatus(const std::vector<Check>& checks);

std::string DoctorAsText(const Diagnosis& diagnosis, const TextStyle& style);

/// One JSON object: `schema`, `status`, `checks` (objects with `name`, `status`, `path`, `version`, `detail`, `impact`,
/// `provided_by`), `vendors` (objects with `name`, `status`, `meaning`).
std::string DoctorAsJson(const Diagnosis& diagnosis);

} // namespace orvel::tools
