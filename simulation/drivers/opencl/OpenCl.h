#pragma once

namespace orvel::simulation {

/// Ends all handles of platforms and devices, as opencl.dll leaves the process or the machine changes.
void ResetOpenCl();

} // namespace orvel::simulation
