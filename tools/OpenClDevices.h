#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orvel::tools {

/// A GPU as OpenCL tells it.
struct OpenClDevice {
    std::string Name;
    uint32_t VendorId;
};

/// The GPUs of all of OpenCL's platforms; none where OpenCL cannot be asked.
std::vector<OpenClDevice> OpenClDevices();

} // namespace orvel::tools
