#pragma once

#include <string>
#include <vector>

#include <CL/cl.h>

#include "platform/Handles.h"

namespace orvel::shared::enumeration {

/// Texts of OpenCL device properties, queried through the OpenCL loader "opencl.dll". Only GPUs are considered.
///
/// Functions are looked up on every call. Failures are logged and return an empty text or list; apart from exhausted memory
/// (std::bad_alloc) only the constructor throws. A count of more than 65,536 is a failure. Intended: a failed call
/// releases the module once more and keeps the handle, and the destructor releases it again.
class OpenCLWrapper {
public:
    /// Loads "opencl.dll"; throws std::runtime_error ("Failed to load opencl.dll") where it cannot be loaded.
    OpenCLWrapper();
    OpenCLWrapper(const OpenCLWrapper&) = delete;
    OpenCLWrapper& operator=(const OpenCLWrapper&) = delete;

    /// Every platform; empty on failure.
    std::vector<cl_platform_id> GetPlatforms() const;

    /// The GPUs of a platform; empty on failure.
    std::vector<cl_device_id> GetDevices(cl_platform_id platform) const;

    /// The GPUs of all platforms, in platform order.
    std::vector<cl_device_id> GetAllDevices() const;

    /// A device property as text; "" on failure. CL_DEVICE_VENDOR_ID is lower-case hexadecimal without prefix;
    /// CL_DEVICE_MAX_COMPUTE_UNITS, CL_DEVICE_MAX_CLOCK_FREQUENCY (megahertz) and CL_DEVICE_MAX_CONSTANT_ARGS are decimal;
    /// any other is taken as text up to its first NUL.
    std::string GetDeviceInfo(cl_device_id device, cl_device_info param) const;

    /// A property of the first GPU whose CL_DEVICE_NAME is `name` and, unless `vendor` is empty, whose CL_DEVICE_VENDOR_ID
    /// text is `vendor`; "" when there is none.
    std::string GetDeviceInfoByName(const std::string& name, cl_device_info param, const std::string& vendor) const;

private:
    bool HasVendor(cl_device_id device, const std::string& vendor) const;
    void ReleaseOnFailure() const;

    ModuleHandle module;
};

} // namespace orvel::shared::enumeration
