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

/// What a fault may do to the enumeration of the healthy workstation; everything else has to stay as it was.
struct Consequence {
    std::map<std::string, Fields> Changed; ///< by manufacturer: exactly these properties of its record are other ones
    std::set<std::string> Gone;            ///< manufacturers that have no record
    std::optional<long> Leaves;            ///< the status that leaves QueryGraphicCards
    std::set<std::string> Alive;           ///< interfaces whose objects need not be gone
};

Consequence operator+(Consequence left, const Consequence& right);

// Made one by one and put together with +.
Consequence Nothing();
Consequence Lost(std::set<std::string> manufacturers);
Consequence Other(const std::string& manufacturer, Fields fields);
Consequence StaysAlive(const std::string& api);
Consequence Thrown(long status, std::set<std::string> lost);

/// One change of a machine: another value, or none at all. "/…/-" appends to an array.
struct Edit {
    Pointer Path;
    std::optional<Json> Value;
};

struct Fault {
    std::string Name;
    std::vector<Edit> Edits;
    Consequence Expected;
};

/// Applies a fault as far as the places that it changes are still there.
void Apply(const Fault& fault, Json& machine);

/// The workstation of machines/workstation.json, completed so that every call of every interface succeeds and gives a value
/// that differs from the default of a call that fails. A vendor without a card there is a guest: the first machine file with
/// one lends it.
Json HealthyWorkstation();

/// Whether the manufacturer is a guest. The effect of a fault on a guest is not listed; it must not affect the others.
bool IsGuest(const std::string& manufacturer);

/// The manufacturer whose PCI vendor ("VEN_8086") the text names.
std::optional<std::string> VendorOfText(const std::string& text);

// The single faults of the workstation, by interface. Those of WMI queries are derived from the trace of a healthy run.
std::vector<Fault> WmiQueryFaults(const std::vector<std::string>& healthyTrace);
std::vector<Fault> WmiRowFaults();
std::vector<Fault> SystemFaults(); ///< desktop window manager, DXGI, registry
std::vector<Fault> OpenClFaults();
std::vector<Fault> NvapiFaults();
std::vector<Fault> NvmlFaults();
std::vector<Fault> AdlFaults();
std::vector<Fault> AdlxFaults();

// Faults of the usual kinds.
Fault Setting(const Pointer& path, const Json& value, const Consequence& expected);
Fault Removing(const Pointer& path, const Consequence& expected);
/// The function's name in the interface's list of functions that cannot be found.
Fault Hiding(const std::string& api, const std::string& function, const Consequence& expected);
Json Status(long status);
Json StatusAndValue(long status, const Json& value);
/// The call fills what it may write to with the byte 0x5A.
Json StatusAndRubbish(long status);

} // namespace orvel::tests
