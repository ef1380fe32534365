#include "machine/OpenClModel.h"

#include <CL/cl.h>

namespace orvel::simulation {

namespace {

const std::vector<std::string> functions = {"clGetPlatformIDs", "clGetDeviceIDs", "clGetDeviceInfo"};

/// The status of a count call, optionally with a count: {"status": N, "value": COUNT}.
ReadField AsCountStatus(Answer<uint32_t>& target)
{
    return [&target](const Node& node) { ReadWithBareStatus(node, target); };
}

ReadField AsType(uint64_t& target)
{
    return [&target](const Node& node) {
        const std::string type = node.Text();
        if (type != "gpu" && type != "cpu") {
            node.Refuse("expected \"gpu\" or \"cpu\", found \"" + type + "\"");
        }
        target = type == "gpu" ? CL_DEVICE_TYPE_GPU : CL_DEVICE_TYPE_CPU;
    };
}

/// A parameter's result, whose value has OpenCL's type for the parameter.
template <typename Value>
ReadField AsParameter(OpenClDevice& device, uint32_t parameter)
{
    return [&device, parameter](const Node& node) {
        Answer<Value> answer;
        ReadInto(node, answer);
        device.parameters[parameter] = {answer.given, answer.status, answer.value, answer.writes};
    };
}

} // namespace

void ReadInto(const Node& node, OpenClDevice& target)
{
    target.type = CL_DEVICE_TYPE_GPU;
    node.ReadFields({
        {"type", AsType(target.type)},
        {"CL_DEVICE_NAME", AsParameter<std::string>(target, CL_DEVICE_NAME)},
        {"CL_DEVICE_VENDOR_ID", AsParameter<uint32_t>(target, CL_DEVICE_VENDOR_ID)},
        {"CL_DEVICE_MAX_COMPUTE_UNITS", AsParameter<uint32_t>(target, CL_DEVICE_MAX_COMPUTE_UNITS)},
        {"CL_DEVICE_MAX_CLOCK_FREQUENCY", AsParameter<uint32_t>(target, CL_DEVICE_MAX_CLOCK_FREQUENCY)},
        {"CL_DEVICE_MAX_CONSTANT_ARGS", AsParameter<uint32_t>(target, CL_DEVICE_MAX_CONSTANT_ARGS)},
    });
}

void ReadInto(const Node& node, OpenClPlatform& target)
{
    node.ReadFields({
        {"devices_count", AsCountStatus(target.devicesCount)},
        {"devices_fetch", Into(target.devicesFetch)},
        {"devices", Into(target.devices)},
    });
}

void ReadInto(const Node& node, OpenClModel& target)
{
    node.ReadFields({
        {"missing", NamesInto(target.missing, functions)},
        {"pinned", Into(target.pinned)},
        {"platforms_count", AsCountStatus(target.platformsCount)},
        {"platforms_fetch", Into(target.platformsFetch)},
        {"platforms", Into(target.platforms)},
    });
}

} // namespace orvel::simulation
