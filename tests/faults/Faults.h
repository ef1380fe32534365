#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "support/SimulatedRun.h"

namespace orvel::tests {

using Pointer = Json::json_pointer;
using Fields = std::set<std::string>;

/// The effects of a fault on the enumeration of the healthy workstation. Everything else must stay unchanged.
struct Consequence {
    std::map<std::string, Fields> Changed; ///< by manufacturer: exactly these properties of its record change
    std::set<std::string> Gone;            ///< manufacturers without a record
    std::optional<long> Leaves;            ///< the status that QueryGraphicCards throws
    std::set<std::string> Alive;           ///< interfaces whose objects may stay alive
};

Consequence operator+(Consequence left, const Consequence& right);

// Single effects, combined with +.
Consequence Nothing();
Consequence Lost(std::set<std::string> manufacturers);
Consequence Other(const std::string& manufacturer, Fields fields);
Consequence StaysAlive(const std::string& api);
Consequence Thrown(long status, std::set<std::string> lost);

/// One change of a machine: sets a value, or removes it. "/…/-" appends to an array.
struct Edit {
    Pointer Path;
    std::optional<Json> Value;
};

struct Fault {
    std::string Name;
    std::vector<Edit> Edits;
    Consequence Expected;
};

/// Applies those changes of a fault whose positions still exist.
void Apply(const Fault& fault, Json& machine);

/// The workstation of machines/workstation.json, completed so that every call of every interface succeeds and returns a
/// value other than the default of a failed call. If it has no card of a vendor (a "guest"), the card of the first machine
/// file with one is added.
Json HealthyWorkstation();

/// Whether the manufacturer is a guest. The effects on a guest are not listed, but a guest's fault must not affect the
/// others.
bool IsGuest(const std::string& manufacturer);

/// The manufacturer whose PCI vendor ("VEN_8086") the text names.
std::optional<std::string> VendorOfText(const std::string& text);

// The faults of the workstation, by interface. The faults of WMI queries are derived from the trace of a healthy run.
std::vector<Fault> WmiQueryFaults(const std::vector<std::string>& healthyTrace);
std::vector<Fault> WmiRowFaults();
std::vector<Fault> SystemFaults(); ///< desktop window manager, DXGI, registry
std::vector<Fault> OpenClFaults();
std::vector<Fault> NvapiFaults();
std::vector<Fault> NvmlFaults();
std::vector<Fault> AdlFaults();
std::vector<Fault> AdlxFaults();

/// All of them.
std::vector<Fault> AllFaults();

// Faults of the usual kinds.
Fault Setting(const Pointer& path, const Json& value, const Consequence& expected);
Fault Removing(const Pointer& path, const Consequence& expected);
/// The interface lacks the function.
Fault Hiding(const std::string& api, const std::string& function, const Consequence& expected);
Json Status(long status);
Json StatusAndValue(long status, const Json& value);
/// The call fills its output areas with the byte 0x5A.
Json StatusAndRubbish(long status);

} // namespace orvel::tests
