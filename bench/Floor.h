#pragma once

namespace orvel::bench {

class FloorWmi;

/// Looks up the functions that the product imports when it is loaded. Call it after the machine is put in place.
void PrepareFloor();

/// Makes the platform calls of one enumeration of a healthy machine, in the product's order, directly on the interfaces.
/// Each distinct WMI query is sent once. Other values are only kept if a later call depends on them.
void RunFloor();

/// The part of PrepareFloor for NVML.
void PrepareNvidiaFloor();

// The parts of RunFloor for each vendor.
void RunIntelFloor(FloorWmi& wmi);
void RunNvidiaFloor(FloorWmi& wmi);
void RunAmdFloor(FloorWmi& wmi);

} // namespace orvel::bench
