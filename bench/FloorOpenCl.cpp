#include "FloorOpenCl.h"

#include <cstring>

namespace orvel::bench {

namespace {

using shared::enumeration::FindFunction;

constexpr cl_uint mostDevices = 256;

struct Devices {
    cl_device_id Ids[mostDevices];
    cl_uint Count = 0;
};

void ListDevices(HMODULE opencl, cl_platform_id platform, Devices& devices)
{
    const auto getDeviceIds = FindFunction<decltype(&clGetDeviceIDs)>(opencl, "clGetDeviceIDs");
    cl_uint count = 0;
    getDeviceIds(platform, CL_DEVICE_TYPE_GPU, 0, nullptr, &count);
    if (count > 0) {
        getDeviceIds(platform, CL_DEVICE_TYPE_GPU, count, devices.Ids + devices.Count, nullptr);
        devices.Count += count;
    }
}

void ListAllDevices(HMODULE opencl, Devices& devices)
{
    const auto getPlatformIds = FindFunction<decltype(&clGetPlatformIDs)>(opencl, "clGetPlatformIDs");
    cl_platform_id platforms[16];
    cl_uint count = 0;
    getPlatformIds(0, nullptr, &count);
    getPlatformIds(count, platforms, nullptr);
    for (cl_uint index = 0; index < count; ++index) {
        ListDevices(opencl, platforms[index], devices);
    }
}

void Read(HMODULE opencl, cl_device_id device, cl_device_info parameter, void* value)
{
    const auto getDeviceInfo = FindFunction<decltype(&clGetDeviceInfo)>(opencl, "clGetDeviceInfo");
    size_t bytes = 0;
    getDeviceInfo(device, parameter, 0, nullptr, &bytes);
    getDeviceInfo(device, parameter, bytes, value, nullptr);
}

} // namespace

shared::enumeration::ModuleHandle LoadOpenCl()
{
    return shared::enumeration::ModuleHandle(::LoadLibraryW(L"opencl.dll"));
}

void ReadDevice(HMODULE opencl, const char* name, cl_uint vendor, cl_device_info parameter)
{
    Devices devices;
    ListAllDevices(opencl, devices);
    for (cl_uint index = 0; index < devices.Count; ++index) {
        char text[256];
        Read(opencl, devices.Ids[index], CL_DEVICE_NAME, text);
        if (std::strcmp(text, name) != 0) {
            continue;
        }
        cl_uint number = 0;
        Read(opencl, devices.Ids[index], CL_DEVICE_VENDOR_ID, &number);
        if (number == vendor) {
            Read(opencl, devices.Ids[index], parameter, text);
            return;
        }
    }
}

} // namespace orvel::bench
