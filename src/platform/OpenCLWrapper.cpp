#include "platform/OpenCLWrapper.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>

#include "formulas/RunFailure.h"
#include "platform/Counts.h"
#include "platform/Log.h"

namespace orvel::shared::enumeration {

namespace {

using Buffer = std::unique_ptr<char, CloseWith<&std::free>>;

std::string ToText(uint32_t number, int base)
{
    char digits[16];
    return std::string(digits, std::to_chars(digits, digits + sizeof(digits), number, base).ptr);
}

std::string FormatInfo(cl_device_info param, const char* data, size_t bytes)
{
    uint32_t number = 0;
    std::memcpy(&number, data, std::min(bytes, sizeof(number)));
    switch (param) {
    case CL_DEVICE_VENDOR_ID:
        return ToText(number, 16);
    case CL_DEVICE_MAX_COMPUTE_UNITS:
    case CL_DEVICE_MAX_CLOCK_FREQUENCY:
    case CL_DEVICE_MAX_CONSTANT_ARGS:
        return ToText(number, 10);
    default:
        return std::string(data, ::strnlen(data, bytes));
    }
}

} // namespace

OpenCLWrapper::OpenCLWrapper() : module(::LoadLibraryW(L"opencl.dll"))
{
    if (!module) {
        throw std::runtime_error(MessageOf(RunFailure::NoOpenCl));
    }
}

// Intended: releases the reference that the destructor releases again. Every call looks up its functions, so an unloaded
// module results in a missing function, not a crash.
void OpenCLWrapper::ReleaseOnFailure() const
{
    ::FreeLibrary(module.get());
}

std::vector<cl_platform_id> OpenCLWrapper::GetPlatforms() const
{
    const auto getPlatformIds = FindFunction<decltype(&clGetPlatformIDs)>(module.get(), "clGetPlatformIDs");
    if (!getPlatformIds) {
        ReleaseOnFailure();
        PLOGE << "Failed to get function pointer for clGetPlatformIDs";
        return {};
    }
    cl_uint count = 0;
    if (getPlatformIds(0, nullptr, &count) != CL_SUCCESS || !IsBelievable(count)) {
        PLOGE << "Failed to get Open CL platforms";
    }
    if (count == 0 || !IsBelievable(count)) {
        return {};
    }
    std::vector<cl_platform_id> platforms(count);
    if (getPlatformIds(count, platforms.data(), nullptr) != CL_SUCCESS) {
        PLOGE << "Failed to get Open CL platforms";
        return {};
    }
    return platforms;
}

std::vector<cl_device_id> OpenCLWrapper::GetDevices(cl_platform_id platform) const
{
    const auto getDeviceIds = FindFunction<decltype(&clGetDeviceIDs)>(module.get(), "clGetDeviceIDs");
    if (!getDeviceIds) {
        ReleaseOnFailure();
        PLOGE << "Failed to get function pointer for clGetDeviceIDs";
        return {};
    }
    cl_uint count = 0;
    if (getDeviceIds(platform, CL_DEVICE_TYPE_GPU, 0, nullptr, &count) != CL_SUCCESS || !IsBelievable(count)) {
        PLOGE << "Failed to get Open CL devices";
    }
    if (count == 0 || !IsBelievable(count)) {
        return {};
    }
    std::vector<cl_device_id> devices(count);
    if (getDeviceIds(platform, CL_DEVICE_TYPE_GPU, count, devices.data(), nullptr) != CL_SUCCESS) {
        PLOGE << "Failed to get Open CL devices";
        return {};
    }
    return devices;
}

std::vector<cl_device_id> OpenCLWrapper::GetAllDevices() const
{
    std::vector<cl_device_id> all;
    for (cl_platform_id platform : GetPlatforms()) {
        const auto devices = GetDevices(platform);
        all.insert(all.end(), devices.begin(), devices.end());
    }
    return all;
}

std::string OpenCLWrapper::GetDeviceInfo(cl_device_id device, cl_device_info param) const
{
    const auto getDeviceInfo = FindFunction<decltype(&clGetDeviceInfo)>(module.get(), "clGetDeviceInfo");
    if (!getDeviceInfo) {
        ReleaseOnFailure();
        PLOGE << "Failed to get function pointer for clGetDeviceInfo";
        return {};
    }
    size_t bytes = 0;
    if (getDeviceInfo(device, param, 0, nullptr, &bytes) != CL_SUCCESS) {
        ReleaseOnFailure();
        PLOGW << "Failed to get device info value size";
        return {};
    }
    // A driver may write less than it has announced.
    const Buffer value(static_cast<char*>(std::calloc(bytes, 1)));
    if (!value) {
        ReleaseOnFailure();
        PLOGE << "Failed to allocate memory for device info value";
        return {};
    }
    if (getDeviceInfo(device, param, bytes, value.get(), nullptr) != CL_SUCCESS) {
        ReleaseOnFailure();
        PLOGW << "Failed to get device info value";
        return {};
    }
    return FormatInfo(param, value.get(), bytes);
}

bool OpenCLWrapper::HasVendor(cl_device_id device, const std::string& vendor) const
{
    std::string text = GetDeviceInfo(device, CL_DEVICE_VENDOR_ID);
    // Intended: the digit zero is stripped, not NUL, so a vendor whose text ends in zeros is only found without them.
    while (text.ends_with('0')) {
        text.pop_back();
    }
    return text == vendor;
}

std::string OpenCLWrapper::GetDeviceInfoByName(const std::string& name, cl_device_info param,
                                               const std::string& vendor) const
{
    for (cl_device_id device : GetAllDevices()) {
        if (GetDeviceInfo(device, CL_DEVICE_NAME) != name || !(vendor.empty() || HasVendor(device, vendor))) {
            continue;
        }
        return GetDeviceInfo(device, param); // a text ends before its first NUL
    }
    return {};
}

} // namespace orvel::shared::enumeration
