// Prints, as JSON, what the library reads from the computer's own OpenCL: each GPU's properties, and the log lines.

#include <cstdio>

#include <nlohmann/json.hpp>
#include <plog/Init.h>

#include "platform/OpenCLWrapper.h"

namespace {

class KeepMessages : public plog::IAppender {
public:
    void write(const plog::Record& record) override { Messages.push_back(record.getMessage()); }

    nlohmann::json Messages = nlohmann::json::array();
};

} // namespace

int main()
{
    using orvel::shared::enumeration::OpenCLWrapper;
    KeepMessages log;
    plog::init(plog::verbose, &log);
    nlohmann::json devices = nlohmann::json::array();
    size_t platforms = 0;
    try {
        const OpenCLWrapper opencl;
        platforms = opencl.GetPlatforms().size();
        for (cl_device_id device : opencl.GetAllDevices()) {
            devices.push_back(
                {{"CL_DEVICE_NAME", opencl.GetDeviceInfo(device, CL_DEVICE_NAME)},
                 {"CL_DEVICE_VENDOR_ID", opencl.GetDeviceInfo(device, CL_DEVICE_VENDOR_ID)},
                 {"CL_DEVICE_MAX_CLOCK_FREQUENCY", opencl.GetDeviceInfo(device, CL_DEVICE_MAX_CLOCK_FREQUENCY)},
                 {"CL_DEVICE_MAX_COMPUTE_UNITS", opencl.GetDeviceInfo(device, CL_DEVICE_MAX_COMPUTE_UNITS)},
                 {"CL_DEVICE_MAX_CONSTANT_ARGS", opencl.GetDeviceInfo(device, CL_DEVICE_MAX_CONSTANT_ARGS)}});
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    std::puts(nlohmann::json{{"platforms", platforms}, {"devices", devices}, {"log", log.Messages}}.dump(2).c_str());
}
