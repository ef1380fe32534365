#pragma once

namespace orvel::bench {

class FloorWmi;

/// Looks up the functions that the product imports when it is loaded. To be called when the machine is in place.
void PrepareFloor();

/// Makes the platform calls of one enumeration of a healthy machine, in the product's order, straight on the interfaces. WMI
/// is asked each distinct question once. Other values live only where the next call depends on them.
void RunFloor();

/// NVIDIA's part of the preparation: NVML.
void PrepareNvidiaFloor();

// The runs of the single vendors.
void RunIntelFloor(FloorWmi& wmi);
void RunNvidiaFloor(FloorWmi& wmi);
void RunAmdFloor(FloorWmi& wmi);

} // namespace orvel::bench
