#pragma once

namespace orvel::bench {

/// Looks up the functions that the product imports when it is loaded. To be called when the machine is in place.
void PrepareFloor();

/// Makes the platform calls of one enumeration of a healthy machine, in the product's order, straight on the interfaces. A
/// value lives only where the next call depends on it.
void RunFloor();

/// NVIDIA's part of the preparation: NVML.
void PrepareNvidiaFloor();

// The runs of the single vendors.
void RunIntelFloor();
void RunNvidiaFloor();
void RunAmdFloor();

} // namespace orvel::bench
