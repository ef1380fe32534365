#include "CurrentMachine.h"
#include "Export.h"
#include "ModuleSetup.h"
#include "Trace.h"

#include <CL/cl.h>
#include <algorithm>
#include <cstdio>
#include <cstring>

// A handle is the address of the model's object, so it can be recognised by looking for it, and needs no storage.

using namespace orvel::simulation;

namespace {

const OpenClPlatform* FindPlatform(const OpenClModel& model, const void* handle)
{
    for (const OpenClPlatform& platform : model.platforms) {
        if (&platform == handle)
            return &platform;
    }
    return nullptr;
}

const OpenClDevice* FindDevice(const OpenClModel& model, const void* handle)
{
    for (const OpenClPlatform& platform : model.platforms) {
        for (const OpenClDevice& device : platform.devices) {
            if (&device == handle)
                return &device;
        }
    }
    return nullptr;
}

/// Fills `handles` as far as both lists reach; the rest becomes null.
template <typename Handle, typename Object>
void Hand(const std::vector<const Object*>& objects, cl_uint entries, Handle* handles)
{
    std::fill_n(handles, entries, nullptr);
    for (size_t index = 0; index < std::min<size_t>(entries, objects.size()); ++index)
        handles[index] = reinterpret_cast<Handle>(const_cast<Object*>(objects[index]));
}

/// A count call: the count that the file sets, or the true one, if the call is to write any.
cl_int Count(const Answer<uint32_t>& answer, size_t objects, cl_uint* count)
{
    if (count != nullptr && answer.value)
        *count = *answer.value;
    else if (count != nullptr && answer.status == 0)
        *count = static_cast<cl_uint>(objects);
    return answer.status;
}

template <typename Object>
std::vector<const Object*> PointersTo(const std::vector<Object>& objects, cl_device_type type = 0)
{
    std::vector<const Object*> pointers;
    for (const Object& object : objects) {
        if constexpr (requires { object.type; }) {
            if ((object.type & type) == 0)
                continue;
        }
        pointers.push_back(&object);
    }
    return pointers;
}

/// Whether the file itself decides what the count call answers, rather than the devices it lists.
bool IsDecided(const Answer<uint32_t>& count)
{
    return count.status != 0 || count.value.has_value();
}

cl_int GiveDevices(const OpenClPlatform& platform, cl_device_type type, cl_uint entries, cl_device_id* handles,
                   cl_uint* count)
{
    const auto devices = PointersTo(platform.devices, type);
    if (handles == nullptr && IsDecided(platform.devicesCount))
        return Count(platform.devicesCount, devices.size(), count);
    if (handles != nullptr && platform.devicesFetch.code != 0)
        return platform.devicesFetch.code;
    if (count != nullptr)
        *count = static_cast<cl_uint>(devices.size());
    if (devices.empty())
        return CL_DEVICE_NOT_FOUND;
    if (handles != nullptr)
        Hand(devices, entries, handles);
    return CL_SUCCESS;
}

cl_int Copy(const void* data, size_t size, size_t capacity, void* target)
{
    if (target == nullptr)
        return CL_SUCCESS;
    if (capacity < size)
        return CL_INVALID_VALUE;
    std::memcpy(target, data, size);
    return CL_SUCCESS;
}

size_t SizeOf(const OpenClValue& value)
{
    const auto* const text = std::get_if<std::string>(&value);
    return text != nullptr ? text->size() + 1 : sizeof(uint32_t);
}

const void* DataOf(const OpenClValue& value)
{
    const auto* const text = std::get_if<std::string>(&value);
    return text != nullptr ? static_cast<const void*>(text->c_str()) : &std::get<uint32_t>(value);
}

/// {"status": N} fails the size call; {"status": N, "value": V} lets it succeed and fails the value call.
cl_int GiveParameter(const Answer<OpenClValue>& answer, size_t capacity, void* target, size_t* size)
{
    if (!answer.value)
        return answer.status;
    if (size != nullptr)
        *size = SizeOf(*answer.value);
    const cl_int copied = Copy(DataOf(*answer.value), SizeOf(*answer.value), capacity, target);
    return target != nullptr && answer.status != 0 ? answer.status : copied;
}

cl_int GetDeviceInfo(const OpenClModel& model, const void* handle, cl_device_info parameter, size_t capacity, void* target,
                     size_t* size)
{
    const OpenClDevice* const device = FindDevice(model, handle);
    if (device == nullptr)
        return CL_INVALID_DEVICE;
    if (target == nullptr && size == nullptr)
        return CL_INVALID_VALUE;
    const auto answer = device->parameters.find(parameter);
    return answer == device->parameters.end() ? CL_INVALID_VALUE : GiveParameter(answer->second, capacity, target, size);
}

void TraceDeviceInfo(cl_device_info parameter)
{
    char text[40];
    std::snprintf(text, sizeof text, "opencl clGetDeviceInfo 0x%04X", parameter);
    AddToTrace(text);
}

} // namespace

SIMULATED cl_int WINAPI Sim_clGetPlatformIDs(cl_uint entries, cl_platform_id* handles, cl_uint* count)
{
    AddToTrace("opencl clGetPlatformIDs");
    if ((handles == nullptr && count == nullptr) || (handles != nullptr && entries == 0))
        return CL_INVALID_VALUE;
    const auto machine = CurrentMachine();
    const OpenClModel& model = machine->opencl.model;
    if (handles == nullptr)
        return Count(model.platformsCount, model.platforms.size(), count);
    if (model.platformsFetch.code != 0)
        return model.platformsFetch.code;
    if (count != nullptr)
        *count = static_cast<cl_uint>(model.platforms.size());
    Hand(PointersTo(model.platforms), entries, handles);
    return CL_SUCCESS;
}

SIMULATED cl_int WINAPI Sim_clGetDeviceIDs(cl_platform_id handle, cl_device_type type, cl_uint entries,
                                           cl_device_id* handles, cl_uint* count)
{
    AddToTrace("opencl clGetDeviceIDs");
    const auto machine = CurrentMachine();
    const OpenClPlatform* const platform = FindPlatform(machine->opencl.model, handle);
    if (platform == nullptr)
        return CL_INVALID_PLATFORM;
    if ((handles == nullptr && count == nullptr) || (handles != nullptr && entries == 0))
        return CL_INVALID_VALUE;
    return GiveDevices(*platform, type, entries, handles, count);
}

SIMULATED cl_int WINAPI Sim_clGetDeviceInfo(cl_device_id handle, cl_device_info parameter, size_t capacity, void* target,
                                            size_t* size)
{
    TraceDeviceInfo(parameter);
    const auto machine = CurrentMachine();
    const cl_int status = GetDeviceInfo(machine->opencl.model, handle, parameter, capacity, target, size);
    if (status != CL_SUCCESS)
        AddOpenClReference();
    return status;
}
