#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include <CL/cl.h>

#include "drivers/HandleTable.h"
#include "loading/DriverState.h"
#include "loading/Export.h"
#include "loading/ModuleSetup.h"
#include "machine/CurrentMachine.h"
#include "trace/Trace.h"
#include "trace/Violations.h"

using namespace orvel::simulation;

namespace {

HandleTable<OpenClPlatform>& platformHandles = *new HandleTable<OpenClPlatform>;

HandleTable<OpenClDevice>& deviceHandles = *new HandleTable<OpenClDevice>;

const DriverState state(
    [] {
        platformHandles.Clear();
        deviceHandles.Clear();
    },
    L"opencl.dll");

bool IsCallable(const std::string& call, const CallDetails& details)
{
    AddToTrace(call, details);
    return IsLoadedFor(call, L"opencl.dll");
}

/// Fills `target` as far as both lists reach; the rest becomes null.
template <typename Handle, typename Object>
void Hand(const std::vector<const Object*>& objects, HandleTable<Object>& handles, cl_uint entries, Handle* target)
{
    std::fill_n(target, entries, nullptr);
    for (size_t index = 0; index < std::min<size_t>(entries, objects.size()); ++index) {
        target[index] = static_cast<Handle>(handles.HandleOf(*objects[index]));
    }
}

/// A count call: writes the count that the file sets, or the true one, unless the file prevents it.
cl_int Count(const Answer<uint32_t>& answer, size_t objects, cl_uint* count)
{
    if (answer.writes == Writes::Rubbish) {
        FillWithRubbish({{count, sizeof *count}});
    } else if (answer.value) {
        *count = *answer.value;
    } else if (answer.status == 0 && answer.writes == Writes::AsUsual) {
        *count = static_cast<cl_uint>(objects);
    }
    return answer.status;
}

/// A call for handles for which the file sets a failure or misbehaviour.
cl_int Misbehave(const OutputStatus& fetch, cl_uint entries, void* handles)
{
    if (fetch.writes == Writes::Rubbish) {
        FillWithRubbish({{handles, entries * sizeof(void*)}});
    }
    return fetch.code;
}

bool IsUsual(const OutputStatus& fetch)
{
    return fetch.code == 0 && fetch.writes == Writes::AsUsual;
}

template <typename Object>
std::vector<const Object*> PointersTo(const std::vector<Object>& objects, cl_device_type type = 0)
{
    std::vector<const Object*> pointers;
    for (const Object& object : objects) {
        if constexpr (requires { object.type; }) {
            if ((object.type & type) == 0) {
                continue;
            }
        }
        pointers.push_back(&object);
    }
    return pointers;
}

/// Whether the file sets the result of the count call, which otherwise follows from the devices listed.
bool IsDecided(const Answer<uint32_t>& count)
{
    return count.status != 0 || count.value.has_value() || count.writes != Writes::AsUsual;
}

cl_int GiveDevices(const OpenClPlatform& platform, cl_device_type type, cl_uint entries, cl_device_id* handles,
                   cl_uint* count)
{
    const auto devices = PointersTo(platform.devices, type);
    if (!handles && IsDecided(platform.devicesCount)) {
        return Count(platform.devicesCount, devices.size(), count);
    }
    if (handles && !IsUsual(platform.devicesFetch)) {
        return Misbehave(platform.devicesFetch, entries, handles);
    }
    if (count) {
        *count = static_cast<cl_uint>(devices.size());
    }
    if (devices.empty()) {
        return CL_DEVICE_NOT_FOUND;
    }
    if (handles) {
        Hand(devices, deviceHandles, entries, handles);
    }
    return CL_SUCCESS;
}

size_t SizeOf(const Answer<OpenClValue>& answer)
{
    const auto* const text = std::get_if<std::string>(&*answer.value);
    return text ? text->size() + (answer.writes == Writes::Unterminated ? 0 : 1) : sizeof(uint32_t);
}

const void* DataOf(const OpenClValue& value)
{
    const auto* const text = std::get_if<std::string>(&value);
    return text ? static_cast<const void*>(text->c_str()) : &std::get<uint32_t>(value);
}

/// With {"status": N} the size call fails; with {"status": N, "value": V} it succeeds, and the value call fails.
cl_int GiveParameter(const std::string& call, const Answer<OpenClValue>& answer, size_t capacity, void* target, size_t* size)
{
    if (!answer.value) {
        if (size && answer.writes == Writes::Rubbish) {
            FillWithRubbish({{size, sizeof *size}});
        }
        return answer.status;
    }
    const size_t bytes = SizeOf(answer);
    if (size) {
        *size = bytes;
    }
    if (!target) {
        return CL_SUCCESS;
    }
    if (capacity < bytes) {
        return Refuse(call, "the buffer is too small", CL_INVALID_VALUE);
    }
    if (answer.writes == Writes::Rubbish) {
        FillWithRubbish({{target, bytes}});
    } else if (answer.writes != Writes::Nothing) {
        std::memcpy(target, DataOf(*answer.value), bytes);
    }
    return answer.status;
}

cl_int GetDeviceInfo(const std::string& call, const void* handle, cl_device_info parameter, size_t capacity, void* target,
                     size_t* size)
{
    const OpenClDevice* const device = deviceHandles.Find(handle);
    if (!device) {
        return handle ? Refuse(call, "the device is not alive", CL_INVALID_DEVICE) : CL_INVALID_DEVICE;
    }
    if (!target && !size) {
        return Refuse(call, "nothing is asked for", CL_INVALID_VALUE);
    }
    const auto answer = device->parameters.find(parameter);
    return answer == device->parameters.end() ? CL_INVALID_VALUE
                                              : GiveParameter(call, answer->second, capacity, target, size);
}

std::string CallOfDeviceInfo(cl_device_info parameter)
{
    char text[40];
    std::snprintf(text, sizeof text, "opencl clGetDeviceInfo 0x%04X", parameter);
    return text;
}

} // namespace

SIMULATED cl_int WINAPI Sim_clGetPlatformIDs(cl_uint entries, cl_platform_id* handles, cl_uint* count)
{
    const std::string call = "opencl clGetPlatformIDs";
    if (!IsCallable(call, {nullptr, entries})) {
        return CL_OUT_OF_RESOURCES;
    }
    if ((!handles && !count) || (handles && entries == 0)) {
        return Refuse(call, "nothing is asked for", CL_INVALID_VALUE);
    }
    const auto machine = CurrentMachine();
    const OpenClModel& model = machine->opencl.model;
    if (!handles) {
        return Count(model.platformsCount, model.platforms.size(), count);
    }
    if (!IsUsual(model.platformsFetch)) {
        return Misbehave(model.platformsFetch, entries, handles);
    }
    if (count) {
        *count = static_cast<cl_uint>(model.platforms.size());
    }
    Hand(PointersTo(model.platforms), platformHandles, entries, handles);
    return CL_SUCCESS;
}

/// A null platform or device is not a violation: it results from a count that is too large.
SIMULATED cl_int WINAPI Sim_clGetDeviceIDs(cl_platform_id handle, cl_device_type type, cl_uint entries,
                                           cl_device_id* handles, cl_uint* count)
{
    const std::string call = "opencl clGetDeviceIDs";
    if (!IsCallable(call, {handle, entries})) {
        return CL_OUT_OF_RESOURCES;
    }
    const auto machine = CurrentMachine(); // keeps the models alive
    const OpenClPlatform* const platform = platformHandles.Find(handle);
    if (!platform) {
        return handle ? Refuse(call, "the platform is not alive", CL_INVALID_PLATFORM) : CL_INVALID_PLATFORM;
    }
    if ((!handles && !count) || (handles && entries == 0)) {
        return Refuse(call, "nothing is asked for", CL_INVALID_VALUE);
    }
    return GiveDevices(*platform, type, entries, handles, count);
}

SIMULATED cl_int WINAPI Sim_clGetDeviceInfo(cl_device_id handle, cl_device_info parameter, size_t capacity, void* target,
                                            size_t* size)
{
    const std::string call = CallOfDeviceInfo(parameter);
    if (!IsCallable(call, {handle, capacity})) {
        return CL_OUT_OF_RESOURCES;
    }
    const auto machine = CurrentMachine(); // keeps the models alive
    const cl_int status = GetDeviceInfo(call, handle, parameter, capacity, target, size);
    if (status != CL_SUCCESS) {
        AddOpenClReference();
    }
    return status;
}
