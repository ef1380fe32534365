// NVML's functions are looked up here, unlike in the library, which imports them: a driver that lacks one has to be
// recorded.

#include "Interfaces.h"

#include <limits>
#include <set>

#include "interfaces/NvmlTypes.h"
#include "platform/Counts.h"
#include "platform/Handles.h"

namespace orvel::recorder {

using namespace orvel::shared::enumeration;

namespace {

constexpr int thresholds[] = {NVML_TEMPERATURE_THRESHOLD_SHUTDOWN, NVML_TEMPERATURE_THRESHOLD_SLOWDOWN,
                              NVML_TEMPERATURE_THRESHOLD_GPU_MAX};
constexpr int clocks[] = {NVML_CLOCK_MEM};
constexpr int maxClocks[] = {NVML_CLOCK_GRAPHICS, NVML_CLOCK_MEM};
constexpr int errorTypes[] = {NVML_MEMORY_ERROR_TYPE_CORRECTED, NVML_MEMORY_ERROR_TYPE_UNCORRECTED};
constexpr nvmlReturn_t uninitialized = 1;
constexpr nvmlReturn_t invalidArgument = 2;

/// Those that an enumeration and an inventory call.
constexpr const char* functions[] = {
    "nvmlInit_v2",
    "nvmlShutdown",
    "nvmlErrorString",
    "nvmlDeviceGetCount_v2",
    "nvmlDeviceGetHandleByIndex_v2",
    "nvmlDeviceGetSerial",
    "nvmlDeviceGetCudaComputeCapability",
    "nvmlDeviceGetTemperatureThreshold",
    "nvmlDeviceGetCurrPcieLinkGeneration",
    "nvmlDeviceGetMaxPcieLinkGeneration",
    "nvmlDeviceGetMaxPcieLinkWidth",
    "nvmlDeviceGetClockInfo",
    "nvmlDeviceGetMemoryBusWidth",
    "nvmlSystemGetDriverVersion",
    "nvmlDeviceGetPciInfo_v3",
    "nvmlDeviceGetMemoryInfo",
    "nvmlDeviceGetUUID",
    "nvmlDeviceGetVbiosVersion",
    "nvmlDeviceGetMaxClockInfo",
    "nvmlDeviceGetNumGpuCores",
    "nvmlDeviceGetCurrPcieLinkWidth",
    "nvmlDeviceGetGpuMaxPcieLinkGeneration",
    "nvmlDeviceGetEccMode",
    "nvmlDeviceGetTotalEccErrors",
};

using Section = std::optional<Json>;

/// A loaded nvml.dll. Each status that a call answers is remembered, for its text.
class NvmlRecorder {
public:
    NvmlRecorder(HMODULE nvmlModule, WatchedThread<Section>& watchedThread) : module(nvmlModule), thread(watchedThread) {}

    void Record()
    {
        section["missing"] = Json::array();
        for (const char* name : functions) {
            if (!Has(name)) {
                section["missing"].push_back(name);
            }
        }
        if (Has("nvmlInit_v2")) {
            section["nvmlInit_v2"] = Call("nvmlInit_v2");
        }
        if (section.value("nvmlInit_v2", NVML_ERROR_UNKNOWN) == NVML_SUCCESS && Has("nvmlShutdown")) {
            RecordSession();
        }
        AddErrorTexts();
        thread.Publish(section, "");
    }

private:
    bool Has(const char* name) const { return FindFunction<FARPROC>(module, name) != nullptr; }

    template <typename... Parameters>
    nvmlReturn_t Call(const char* name, Parameters... parameters)
    {
        using Function = nvmlReturn_t (*)(Parameters...);
        const auto function = FindFunction<Function>(module, name);
        const nvmlReturn_t status = function ? function(parameters...) : NVML_ERROR_UNKNOWN;
        if (status != NVML_SUCCESS) {
            statuses.insert(status);
        }
        return status;
    }

    /// Adds what `ask` records for a function, unless the driver lacks it.
    template <typename Ask>
    void Add(Json& target, const char* name, Ask ask)
    {
        if (Has(name)) {
            target[name] = ask(name);
        }
    }

    template <typename Number = unsigned int, typename... Parameters>
    void AddNumber(Json& target, const char* name, Parameters... parameters)
    {
        Add(target, name, [&](const char* function) {
            return RecordNumberOf<Number>([&](Number* number) { return Call(function, parameters..., number); });
        });
    }

    template <size_t Size, typename... Parameters>
    void AddText(Json& target, const char* name, Parameters... parameters)
    {
        Add(target, name, [&](const char* function) {
            return RecordTextOf<Size>(
                [&](char* text) { return Call(function, parameters..., text, static_cast<unsigned int>(Size)); });
        });
    }

    void AddPair(Json& device, const char* name, nvmlDevice_t handle, int initially)
    {
        Add(device, name, [&](const char* function) {
            int first = initially;
            int second = initially;
            const nvmlReturn_t status = Call(function, handle, &first, &second);
            return Answer(status, Json::array({first, second}));
        });
    }

    /// A function with one answer for each argument.
    template <size_t Length>
    void AddEach(Json& device, const char* name, nvmlDevice_t handle, const int (&arguments)[Length])
    {
        Add(device, name, [&](const char* function) {
            Json answers;
            for (const int argument : arguments) {
                answers[std::to_string(argument)] = RecordNumberOf<unsigned int>(
                    [&](unsigned int* number) { return Call(function, handle, argument, number); });
            }
            return answers;
        });
    }

    /// What an enumeration asks comes first. The first call that only an inventory makes is blamed for what hangs after
    /// that.
    void RecordSession()
    {
        RecordForEnumeration();
        AddErrorTexts();
        thread.Publish(section, "nvml nvmlDeviceGetPciInfo_v3");
        AddText<NVML_SYSTEM_DRIVER_VERSION_BUFFER_SIZE>(section, "nvmlSystemGetDriverVersion");
        for (size_t index = 0; index < handles.size(); ++index) {
            if (handles[index]) {
                RecordForInventory(handles[index], section["devices"][index]);
            }
        }
        section["nvmlShutdown"] = Call("nvmlShutdown");
    }

    void RecordForEnumeration()
    {
        unsigned int count = 0;
        const nvmlReturn_t status = Call("nvmlDeviceGetCount_v2", &count);
        section["devices"] = Json::array();
        Add(section, "nvmlDeviceGetCount_v2", [&](const char*) { return Answer(status, count); });
        const bool isUsed = status == NVML_SUCCESS && IsBelievable(count) && Has("nvmlDeviceGetHandleByIndex_v2");
        for (unsigned int index = 0; isUsed && index < count; ++index) {
            nvmlDevice_t handle = nullptr;
            const nvmlReturn_t result = Call("nvmlDeviceGetHandleByIndex_v2", index, &handle);
            Json device = {{"handle", ObjectAnswer(result, result == NVML_SUCCESS, handle)}};
            handles.push_back(result == NVML_SUCCESS ? handle : nullptr);
            if (handles.back()) {
                RecordForEnumeration(handle, device);
            }
            section["devices"].push_back(device);
        }
    }

    void RecordForEnumeration(nvmlDevice_t handle, Json& device)
    {
        AddText<NVML_DEVICE_SERIAL_BUFFER_SIZE>(device, "nvmlDeviceGetSerial", handle);
        AddPair(device, "nvmlDeviceGetCudaComputeCapability", handle, 0);
        AddEach(device, "nvmlDeviceGetTemperatureThreshold", handle, thresholds);
        AddEach(device, "nvmlDeviceGetClockInfo", handle, clocks);
        for (const char* name : {"nvmlDeviceGetCurrPcieLinkGeneration", "nvmlDeviceGetMaxPcieLinkGeneration",
                                 "nvmlDeviceGetMaxPcieLinkWidth", "nvmlDeviceGetMemoryBusWidth"}) {
            AddNumber(device, name, handle);
        }
    }

    void RecordForInventory(nvmlDevice_t handle, Json& device)
    {
        Add(device, "nvmlDeviceGetPciInfo_v3", [&](const char* name) { return RecordPlace(name, handle); });
        Add(device, "nvmlDeviceGetMemoryInfo", [&](const char* name) { return RecordMemory(name, handle); });
        AddText<NVML_DEVICE_UUID_V2_BUFFER_SIZE>(device, "nvmlDeviceGetUUID", handle);
        AddText<NVML_DEVICE_VBIOS_VERSION_BUFFER_SIZE>(device, "nvmlDeviceGetVbiosVersion", handle);
        AddEach(device, "nvmlDeviceGetMaxClockInfo", handle, maxClocks);
        for (const char* name :
             {"nvmlDeviceGetNumGpuCores", "nvmlDeviceGetCurrPcieLinkWidth", "nvmlDeviceGetGpuMaxPcieLinkGeneration"}) {
            AddNumber(device, name, handle);
        }
        AddPair(device, "nvmlDeviceGetEccMode", handle, -1); // a mode is 0 or 1
        Add(device, "nvmlDeviceGetTotalEccErrors", [&](const char* name) { return RecordEccErrors(name, handle); });
    }

    /// As an inventory does: a place that is not written is not one on PCI.
    Json RecordPlace(const char* name, nvmlDevice_t handle)
    {
        nvmlPciInfo_t place{};
        place.bus = place.device = std::numeric_limits<uint32_t>::max();
        const nvmlReturn_t status = Call(name, handle, &place);
        return Answer(status, {{"domain", place.domain},
                               {"bus", place.bus},
                               {"device", place.device},
                               {"pciDeviceId", place.pciDeviceId},
                               {"pciSubSystemId", place.pciSubSystemId}});
    }

    Json RecordMemory(const char* name, nvmlDevice_t handle)
    {
        nvmlMemory_t memory{};
        const nvmlReturn_t status = Call(name, handle, &memory);
        return Answer(status, {{"total", memory.total}, {"free", memory.free}, {"used", memory.used}});
    }

    Json RecordEccErrors(const char* name, nvmlDevice_t handle)
    {
        Json answers;
        for (const int type : errorTypes) {
            const std::string key = std::to_string(type) + "," + std::to_string(NVML_AGGREGATE_ECC);
            answers[key] = RecordNumberOf<uint64_t>(
                [&](uint64_t* errors) { return Call(name, handle, type, NVML_AGGREGATE_ECC, errors); });
        }
        return answers;
    }

    /// The driver's texts for the statuses that it has answered, and for those of calls without a device.
    void AddErrorTexts()
    {
        const auto errorString = FindFunction<const char* (*)(nvmlReturn_t)>(module, "nvmlErrorString");
        statuses.insert({uninitialized, invalidArgument, NVML_ERROR_UNKNOWN});
        for (const nvmlReturn_t status : statuses) {
            if (const char* text = errorString ? errorString(status) : nullptr) {
                section["nvmlErrorString"][std::to_string(status)] = Text(std::string_view(text));
            }
        }
    }

    HMODULE module;
    WatchedThread<Section>& thread;
    Json section;
    std::vector<nvmlDevice_t> handles; ///< null where there is no device
    std::set<nvmlReturn_t> statuses;
};

void Read(WatchedThread<Section>& thread)
{
    if (const ModuleHandle module(::LoadLibraryW(L"nvml.dll")); module) {
        NvmlRecorder(module.get(), thread).Record();
    } else {
        thread.Publish(std::nullopt, "");
    }
}

} // namespace

Recorded<Section> RecordNvml(uint32_t patienceMilliseconds)
{
    return RecordOnThread("nvml nvmlInit_v2", Section(Json::object()), patienceMilliseconds, &Read);
}

} // namespace orvel::recorder
