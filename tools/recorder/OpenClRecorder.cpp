#include "Interfaces.h"

#include <cstdlib>
#include <memory>
#include <vector>

#include <CL/cl.h>

#include "platform/Counts.h"
#include "platform/Handles.h"

namespace orvel::recorder {

using namespace orvel::shared::enumeration;

namespace {

constexpr wchar_t dllName[] = L"opencl.dll";

struct Parameter {
    const char* Name;
    cl_device_info Id;
};

constexpr Parameter parameters[] = {
    {"CL_DEVICE_NAME", CL_DEVICE_NAME},
    {"CL_DEVICE_VENDOR_ID", CL_DEVICE_VENDOR_ID},
    {"CL_DEVICE_MAX_COMPUTE_UNITS", CL_DEVICE_MAX_COMPUTE_UNITS},
    {"CL_DEVICE_MAX_CLOCK_FREQUENCY", CL_DEVICE_MAX_CLOCK_FREQUENCY},
    {"CL_DEVICE_MAX_CONSTANT_ARGS", CL_DEVICE_MAX_CONSTANT_ARGS},
};

/// The functions of a loaded OpenCL; null where it lacks one.
struct OpenCl {
    explicit OpenCl(HMODULE module)
        : GetPlatformIds(FindFunction<decltype(&clGetPlatformIDs)>(module, "clGetPlatformIDs")),
          GetDeviceIds(FindFunction<decltype(&clGetDeviceIDs)>(module, "clGetDeviceIDs")),
          GetDeviceInfo(FindFunction<decltype(&clGetDeviceInfo)>(module, "clGetDeviceInfo"))
    {}

    Json Missing() const
    {
        Json missing = Json::array();
        for (const auto& [name, isMissing] :
             {std::pair("clGetPlatformIDs", !GetPlatformIds), std::pair("clGetDeviceIDs", !GetDeviceIds),
              std::pair("clGetDeviceInfo", !GetDeviceInfo)}) {
            if (isMissing) {
                missing.push_back(name);
            }
        }
        return missing;
    }

    decltype(&clGetPlatformIDs) GetPlatformIds;
    decltype(&clGetDeviceIDs) GetDeviceIds;
    decltype(&clGetDeviceInfo) GetDeviceInfo;
};

/// A list of handles that OpenCL gives in two calls. A count that no computer has is not used, nor one of a failed fetch.
template <typename Handle, typename Call>
std::vector<Handle> RecordList(Json& section, const std::string& name, Call call)
{
    cl_uint count = 0;
    const cl_int counted = call(0, nullptr, &count);
    const bool isUsed = count != 0 && IsBelievable(count);
    std::vector<Handle> handles(isUsed ? count : 0);
    const cl_int fetched = isUsed ? call(count, handles.data(), nullptr) : CL_SUCCESS;
    section[name + "_count"] = {{"status", counted}, {"value", count}};
    section[name + "_fetch"] = fetched;
    return fetched == CL_SUCCESS ? handles : std::vector<Handle>();
}

Json ValueOf(const Parameter& parameter, const char* data, size_t bytes)
{
    if (parameter.Id == CL_DEVICE_NAME) {
        const size_t length = ::strnlen(data, bytes);
        const Json text = Text(std::string_view(data, length));
        return length < bytes ? text : Json{{"status", 0}, {"value", text}, {"writes", "unterminated"}};
    }
    uint32_t number = 0;
    std::memcpy(&number, data, std::min(bytes, sizeof number));
    return number;
}

Json RecordParameter(const OpenCl& opencl, cl_device_id device, const Parameter& parameter)
{
    size_t bytes = 0;
    if (const cl_int status = opencl.GetDeviceInfo(device, parameter.Id, 0, nullptr, &bytes); status != CL_SUCCESS) {
        return {{"status", status}};
    }
    const std::unique_ptr<char, CloseWith<&std::free>> data(static_cast<char*>(std::calloc(bytes, 1)));
    if (!data) {
        return {{"status", CL_SUCCESS}, {"writes", "rubbish"}}; // a size that nobody has memory for
    }
    const cl_int status = opencl.GetDeviceInfo(device, parameter.Id, bytes, data.get(), nullptr);
    if (status == CL_SUCCESS) {
        return ValueOf(parameter, data.get(), bytes);
    }
    return {{"status", status}, {"value", parameter.Id == CL_DEVICE_NAME ? Json("") : Json(0)}}; // the size was announced
}

Json RecordDevice(const OpenCl& opencl, cl_device_id id)
{
    Json device = {{"type", "gpu"}};
    for (const Parameter& parameter : parameters) {
        if (opencl.GetDeviceInfo) {
            device[parameter.Name] = RecordParameter(opencl, id, parameter);
        }
    }
    return device;
}

Json RecordPlatform(const OpenCl& opencl, cl_platform_id id)
{
    Json platform = Json::object();
    Json devices = Json::array();
    if (opencl.GetDeviceIds) {
        const auto list = [&](cl_uint entries, cl_device_id* handles, cl_uint* count) {
            return opencl.GetDeviceIds(id, CL_DEVICE_TYPE_GPU, entries, handles, count);
        };
        for (cl_device_id device : RecordList<cl_device_id>(platform, "devices", list)) {
            devices.push_back(RecordDevice(opencl, device));
        }
    }
    platform["devices"] = devices;
    return platform;
}

Json RecordLoaded(const OpenCl& opencl)
{
    Json section = {{"missing", opencl.Missing()}};
    Json platforms = Json::array();
    if (opencl.GetPlatformIds) {
        for (cl_platform_id platform : RecordList<cl_platform_id>(section, "platforms", opencl.GetPlatformIds)) {
            platforms.push_back(RecordPlatform(opencl, platform));
        }
    }
    section["platforms"] = platforms;
    return section;
}

} // namespace

std::optional<Json> RecordOpenCl()
{
    ModuleHandle module(::LoadLibraryW(dllName));
    if (!module) {
        return std::nullopt;
    }
    Json section = RecordLoaded(OpenCl(module.get()));
    module.reset();
    // The library may release more references than it has: the DLL then stays only where somebody else holds it.
    section["pinned"] = ::GetModuleHandleW(dllName) != nullptr;
    return section;
}

} // namespace orvel::recorder
