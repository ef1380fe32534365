#pragma once

#include <string>
#include <vector>

#include "Report.h"
#include "vendors/Vendors.h"

namespace orvel::tools {

/// A vendor's run that ended before it had examined all cards.
struct RunEnd {
    std::string Vendor;
    std::string Message; ///< of the exception or the log line that ended it
    std::string Meaning; ///< in plain words; "" for an unknown message
    std::string Warning; ///< the last one of the same run; "" for none, or if the run ended without an exception
};

/// The runs that ended early, in their order. An exception that ended the whole enumeration is the last entry.
std::vector<RunEnd> EndedRuns(const Report& report);

/// The vendor whose run starts with this line; null for none.
const shared::enumeration::Vendor* BegunBy(const LogLine& line);

} // namespace orvel::tools
