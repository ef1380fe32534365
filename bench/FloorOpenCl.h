#pragma once

#include <CL/cl.h>

#include "platform/Handles.h"

namespace orvel::bench {

/// Loads opencl.dll; the handle keeps it loaded.
shared::enumeration::ModuleHandle LoadOpenCl();

/// Reads a parameter of the first device with this name and vendor, listing the devices and looking up every function on
/// each call.
void ReadDevice(HMODULE opencl, const char* name, cl_uint vendor, cl_device_info parameter);

} // namespace orvel::bench
