#include "OpenClDevices.h"

#include <CL/cl.h>
#include <windows.h>

namespace orvel::tools {

namespace {

constexpr cl_uint mostObjects = 64;

/// OpenCL's loader, as far as it is needed here. It stays loaded, as its drivers may not let themselves be unloaded.
struct OpenCl {
    HMODULE Module = ::LoadLibraryA("opencl.dll");
    decltype(&clGetPlatformIDs) GetPlatformIds = Find<decltype(&clGetPlatformIDs)>("clGetPlatformIDs");
    decltype(&clGetDeviceIDs) GetDeviceIds = Find<decltype(&clGetDeviceIDs)>("clGetDeviceIDs");
    decltype(&clGetDeviceInfo) GetDeviceInfo = Find<decltype(&clGetDeviceInfo)>("clGetDeviceInfo");

    template <typename Function>
    Function Find(const char* name) const
    {
        return Module ? reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(Module, name))) : nullptr;
    }

    bool IsWhole() const { return GetPlatformIds && GetDeviceIds && GetDeviceInfo; }
};

OpenClDevice Describe(const OpenCl& opencl, cl_device_id id)
{
    char name[256] = "";
    cl_uint vendorId = 0;
    opencl.GetDeviceInfo(id, CL_DEVICE_NAME, sizeof(name) - 1, name, nullptr);
    opencl.GetDeviceInfo(id, CL_DEVICE_VENDOR_ID, sizeof(vendorId), &vendorId, nullptr);
    return {name, vendorId};
}

} // namespace

std::vector<OpenClDevice> OpenClDevices()
{
    static const OpenCl opencl;
    std::vector<OpenClDevice> devices;
    cl_platform_id platforms[mostObjects];
    cl_uint platformCount = 0;
    if (!opencl.IsWhole() || opencl.GetPlatformIds(mostObjects, platforms, &platformCount) != CL_SUCCESS) {
        return devices;
    }
    for (cl_uint platform = 0; platform < platformCount && platform < mostObjects; ++platform) {
        cl_device_id ids[mostObjects];
        cl_uint count = 0;
        if (opencl.GetDeviceIds(platforms[platform], CL_DEVICE_TYPE_GPU, mostObjects, ids, &count) != CL_SUCCESS) {
            continue;
        }
        for (cl_uint index = 0; index < count && index < mostObjects; ++index) {
            devices.push_back(Describe(opencl, ids[index]));
        }
    }
    return devices;
}

} // namespace orvel::tools
