// NVML's functions are looked up here, unlike in the library, which imports them: a driver that lacks one has to be
// recorded.

#include "Interfaces.h"

#include <set>

#include "platform/Counts.h"
#include "platform/Handles.h"
#include "vendors/nvidia/Nvml.h"

namespace orvel::recorder {

using namespace orvel::shared::enumeration;

namespace {

constexpr int thresholds[] = {NVML_TEMPERATURE_THRESHOLD_SHUTDOWN, NVML_TEMPERATURE_THRESHOLD_SLOWDOWN,
                              NVML_TEMPERATURE_THRESHOLD_GPU_MAX};
constexpr int clocks[] = {NVML_CLOCK_MEM};
constexpr nvmlReturn_t uninitialized = 1;
constexpr nvmlReturn_t invalidArgument = 2;

/// A loaded nvml.dll. Each status that a call answers is remembered, for its text.
class NvmlRecorder {
public:
    explicit NvmlRecorder(HMODULE nvmlModule) : module(nvmlModule) {}

    Json Record()
    {
        FindMissing();
        section["missing"] = missing;
        const nvmlReturn_t status = Call<decltype(&nvmlInit_v2)>("nvmlInit_v2");
        section["nvmlInit_v2"] = status;
        if (status == NVML_SUCCESS && missing.empty()) {
            RecordSession();
        }
        return section;
    }

private:
    template <typename Function, typename... Arguments>
    nvmlReturn_t Call(const char* name, Arguments... arguments)
    {
        const auto function = FindFunction<Function>(module, name);
        const nvmlReturn_t status = function ? function(arguments...) : NVML_ERROR_UNKNOWN;
        if (status != NVML_SUCCESS) {
            statuses.insert(status);
        }
        return status;
    }

    /// Only where the library can be loaded, all of them are there.
    void FindMissing()
    {
        for (const char* name :
             {"nvmlInit_v2", "nvmlShutdown", "nvmlErrorString", "nvmlDeviceGetCount_v2", "nvmlDeviceGetHandleByIndex_v2",
              "nvmlDeviceGetSerial", "nvmlDeviceGetCudaComputeCapability", "nvmlDeviceGetTemperatureThreshold",
              "nvmlDeviceGetCurrPcieLinkGeneration", "nvmlDeviceGetMaxPcieLinkGeneration", "nvmlDeviceGetMaxPcieLinkWidth",
              "nvmlDeviceGetClockInfo", "nvmlDeviceGetMemoryBusWidth"}) {
            if (!FindFunction<FARPROC>(module, name)) {
                missing.push_back(name);
            }
        }
    }

    void RecordSession()
    {
        unsigned int count = 0;
        const nvmlReturn_t status = Call<decltype(&nvmlDeviceGetCount_v2)>("nvmlDeviceGetCount_v2", &count);
        section["nvmlDeviceGetCount_v2"] = Answer(status, count);
        section["devices"] = Json::array();
        const bool isUsed = status == NVML_SUCCESS && IsBelievable(count);
        for (unsigned int index = 0; isUsed && index < count; ++index) {
            section["devices"].push_back(RecordDevice(index));
        }
        section["nvmlShutdown"] = Call<decltype(&nvmlShutdown)>("nvmlShutdown");
        section["nvmlErrorString"] = ErrorTexts();
    }

    Json RecordDevice(unsigned int index)
    {
        nvmlDevice_t handle = nullptr;
        const nvmlReturn_t status =
            Call<decltype(&nvmlDeviceGetHandleByIndex_v2)>("nvmlDeviceGetHandleByIndex_v2", index, &handle);
        Json device = {{"handle", ObjectAnswer(status, status == NVML_SUCCESS, handle)}};
        if (status == NVML_SUCCESS && handle) {
            RecordProperties(handle, device);
        }
        return device;
    }

    void RecordProperties(nvmlDevice_t handle, Json& device)
    {
        device["nvmlDeviceGetSerial"] = RecordTextOf<NVML_DEVICE_SERIAL_BUFFER_SIZE>([&](char* serial) {
            return Call<decltype(&nvmlDeviceGetSerial)>("nvmlDeviceGetSerial", handle, serial,
                                                        NVML_DEVICE_SERIAL_BUFFER_SIZE);
        });
        int major = 0;
        int minor = 0;
        const nvmlReturn_t capability = Call<decltype(&nvmlDeviceGetCudaComputeCapability)>(
            "nvmlDeviceGetCudaComputeCapability", handle, &major, &minor);
        device["nvmlDeviceGetCudaComputeCapability"] = Answer(capability, Json::array({major, minor}));
        RecordEach("nvmlDeviceGetTemperatureThreshold", handle, thresholds, device);
        RecordEach("nvmlDeviceGetClockInfo", handle, clocks, device);
        for (const char* name : {"nvmlDeviceGetCurrPcieLinkGeneration", "nvmlDeviceGetMaxPcieLinkGeneration",
                                 "nvmlDeviceGetMaxPcieLinkWidth", "nvmlDeviceGetMemoryBusWidth"}) {
            unsigned int number = 0;
            const nvmlReturn_t status = Call<decltype(&nvmlDeviceGetMemoryBusWidth)>(name, handle, &number);
            device[name] = Answer(status, number);
        }
    }

    template <size_t Length>
    void RecordEach(const char* name, nvmlDevice_t handle, const int (&arguments)[Length], Json& device)
    {
        for (const int argument : arguments) {
            unsigned int number = 0;
            const nvmlReturn_t status = Call<decltype(&nvmlDeviceGetClockInfo)>(name, handle, argument, &number);
            device[name][std::to_string(argument)] = Answer(status, number);
        }
    }

    /// The driver's texts for the statuses that it has answered, and for those of calls without a device.
    Json ErrorTexts()
    {
        const auto errorString = FindFunction<decltype(&nvmlErrorString)>(module, "nvmlErrorString");
        statuses.insert({uninitialized, invalidArgument, NVML_ERROR_UNKNOWN});
        Json texts = Json::object();
        for (const nvmlReturn_t status : statuses) {
            if (const char* text = errorString(status)) {
                texts[std::to_string(status)] = Text(std::string_view(text));
            }
        }
        return texts;
    }

    HMODULE module;
    Json section;
    Json missing = Json::array();
    std::set<nvmlReturn_t> statuses;
};

} // namespace

std::optional<Json> RecordNvml()
{
    const ModuleHandle module(::LoadLibraryW(L"nvml.dll"));
    return module ? std::optional(NvmlRecorder(module.get()).Record()) : std::nullopt;
}

} // namespace orvel::recorder
