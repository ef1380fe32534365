#include "Nvml.h"

#include "CurrentMachine.h"
#include "Export.h"
#include "Trace.h"

#include <atomic>
#include <cstring>
#include <map>

namespace orvel::simulation {

namespace {

constexpr int32_t NVML_SUCCESS = 0;
constexpr int32_t NVML_ERROR_UNINITIALIZED = 1;
constexpr int32_t NVML_ERROR_INVALID_ARGUMENT = 2;
constexpr int32_t NVML_ERROR_NOT_SUPPORTED = 3;
constexpr int32_t NVML_ERROR_INSUFFICIENT_SIZE = 7;
constexpr int32_t NVML_ERROR_DRIVER_NOT_LOADED = 9;
constexpr size_t LongestSerial = 29; // characters

std::atomic<int> initialisations = 0;

/// Runs `give` on the model of the device that the handle stands for. Handles are the addresses of the models.
template <typename Give>
int32_t OnDevice(const void* handle, Give&& give)
{
    if (handle == nullptr)
        return NVML_ERROR_INVALID_ARGUMENT;
    if (initialisations == 0)
        return NVML_ERROR_UNINITIALIZED;
    const auto machine = CurrentMachine();
    for (const NvmlDeviceModel& device : machine->nvml.model.devices) {
        if (&device == handle)
            return give(device);
    }
    return NVML_ERROR_INVALID_ARGUMENT;
}

int32_t GiveNumber(const char* name, const void* handle, uint32_t* target, Answer<uint32_t> NvmlDeviceModel::*member)
{
    AddToTrace(std::string("nvml ") + name);
    return OnDevice(handle, [&](const NvmlDeviceModel& device) {
        if (target == nullptr)
            return NVML_ERROR_INVALID_ARGUMENT;
        return (device.*member).Give(NVML_ERROR_NOT_SUPPORTED, [target](uint32_t number) { *target = number; });
    });
}

/// A function whose answer depends on its second argument. A status of the whole function speaks for every argument.
int32_t GiveByArgument(const char* name, const void* handle, int32_t argument, uint32_t* target,
                       Answer<NvmlAnswers> NvmlDeviceModel::*member)
{
    AddToTrace(std::string("nvml ") + name + " " + std::to_string(argument));
    return OnDevice(handle, [&](const NvmlDeviceModel& device) {
        if (target == nullptr)
            return NVML_ERROR_INVALID_ARGUMENT;
        int32_t status = NVML_SUCCESS;
        const int32_t whole = (device.*member).Give(NVML_ERROR_NOT_SUPPORTED, [&](const NvmlAnswers& answers) {
            const auto answer = answers.find(argument);
            status = answer == answers.end()
                         ? NVML_ERROR_NOT_SUPPORTED
                         : answer->second.Give(NVML_ERROR_NOT_SUPPORTED, [target](uint32_t number) { *target = number; });
        });
        return whole != NVML_SUCCESS ? whole : status;
    });
}

int32_t GiveSerial(const NvmlDeviceModel& device, char* target, uint32_t length)
{
    const auto& serial = device.serial.value;
    if (serial && (serial->size() > LongestSerial || serial->size() >= length))
        return NVML_ERROR_INSUFFICIENT_SIZE;
    return device.serial.Give(NVML_ERROR_NOT_SUPPORTED,
                              [target](const std::string& text) { std::memcpy(target, text.c_str(), text.size() + 1); });
}

/// NVML's own words for its status codes.
const char* ErrorText(int32_t status)
{
    static const auto* const texts = new std::map<int32_t, const char*>{
        {0, "Success"},
        {1, "Uninitialized"},
        {2, "Invalid Argument"},
        {3, "Not Supported"},
        {4, "Insufficient Permissions"},
        {5, "Already Initialized"},
        {6, "Not Found"},
        {7, "Insufficient Size"},
        {8, "Insufficient External Power"},
        {9, "Driver Not Loaded"},
        {10, "Timeout"},
        {11, "Interrupt Request Issue"},
        {12, "NVML Shared Library Not Found"},
        {13, "Function Not Found"},
        {14, "Corrupted infoROM"},
        {15, "GPU is lost"},
        {16, "GPU requires reset"},
        {17, "GPU access blocked by the operating system"},
        {18, "Driver/library version mismatch"},
        {19, "In use by another client"},
        {20, "Insufficient Memory"},
        {21, "No data"},
        {22, "Vgpu ecc not supported"},
        {23, "Insufficient Resources"},
        {24, "Frequency not supported"},
        {25, "Argument version mismatch"},
        {26, "Deprecated"},
        {27, "Not Ready"},
        {28, "GPU Not Found"},
        {29, "Invalid state"},
        {30, "Reset type not supported"},
        {999, "Unknown Error"},
    };
    const auto text = texts->find(status);
    return text == texts->end() ? texts->at(999) : text->second;
}

} // namespace

void ResetNvml()
{
    initialisations = 0;
}

} // namespace orvel::simulation

using namespace orvel::simulation;

SIMULATED int32_t Sim_nvmlInit_v2()
{
    AddToTrace("nvml nvmlInit_v2");
    const auto machine = CurrentMachine();
    if (machine->nvml.standing != Standing::Simulated)
        return NVML_ERROR_DRIVER_NOT_LOADED;
    if (machine->nvml.model.init.code != NVML_SUCCESS)
        return machine->nvml.model.init.code;
    ++initialisations;
    CountLive(Counted::Nvml, 1);
    return NVML_SUCCESS;
}

SIMULATED int32_t Sim_nvmlShutdown()
{
    AddToTrace("nvml nvmlShutdown");
    if (initialisations == 0)
        return NVML_ERROR_UNINITIALIZED;
    if (const int32_t status = CurrentMachine()->nvml.model.shutdown.code; status != NVML_SUCCESS)
        return status;
    --initialisations;
    CountLive(Counted::Nvml, -1);
    return NVML_SUCCESS;
}

SIMULATED const char* Sim_nvmlErrorString(int32_t status)
{
    AddToTrace("nvml nvmlErrorString " + std::to_string(status));
    return ErrorText(status);
}

SIMULATED int32_t Sim_nvmlDeviceGetCount_v2(uint32_t* count)
{
    AddToTrace("nvml nvmlDeviceGetCount_v2");
    if (initialisations == 0)
        return NVML_ERROR_UNINITIALIZED;
    if (count == nullptr)
        return NVML_ERROR_INVALID_ARGUMENT;
    const auto machine = CurrentMachine();
    const NvmlModel& model = machine->nvml.model;
    if (model.deviceCount.given)
        return model.deviceCount.Give(NVML_ERROR_NOT_SUPPORTED, [count](uint32_t number) { *count = number; });
    *count = static_cast<uint32_t>(model.devices.size());
    return NVML_SUCCESS;
}

SIMULATED int32_t Sim_nvmlDeviceGetHandleByIndex_v2(uint32_t index, void** handle)
{
    AddToTrace("nvml nvmlDeviceGetHandleByIndex_v2 " + std::to_string(index));
    if (initialisations == 0)
        return NVML_ERROR_UNINITIALIZED;
    const auto machine = CurrentMachine();
    const auto& devices = machine->nvml.model.devices;
    if (handle == nullptr || index >= devices.size())
        return NVML_ERROR_INVALID_ARGUMENT;
    if (devices[index].handle.code != NVML_SUCCESS)
        return devices[index].handle.code;
    *handle = const_cast<NvmlDeviceModel*>(&devices[index]);
    return NVML_SUCCESS;
}

SIMULATED int32_t Sim_nvmlDeviceGetSerial(void* handle, char* serial, uint32_t length)
{
    AddToTrace("nvml nvmlDeviceGetSerial");
    return OnDevice(handle, [&](const NvmlDeviceModel& device) {
        return serial == nullptr ? NVML_ERROR_INVALID_ARGUMENT : GiveSerial(device, serial, length);
    });
}

SIMULATED int32_t Sim_nvmlDeviceGetCudaComputeCapability(void* handle, int32_t* major, int32_t* minor)
{
    AddToTrace("nvml nvmlDeviceGetCudaComputeCapability");
    return OnDevice(handle, [&](const NvmlDeviceModel& device) {
        if (major == nullptr || minor == nullptr)
            return NVML_ERROR_INVALID_ARGUMENT;
        return device.cudaComputeCapability.Give(NVML_ERROR_NOT_SUPPORTED, [&](const std::array<int32_t, 2>& version) {
            *major = version[0];
            *minor = version[1];
        });
    });
}

SIMULATED int32_t Sim_nvmlDeviceGetTemperatureThreshold(void* handle, int32_t threshold, uint32_t* celsius)
{
    return GiveByArgument("nvmlDeviceGetTemperatureThreshold", handle, threshold, celsius,
                          &NvmlDeviceModel::temperatureThreshold);
}

SIMULATED int32_t Sim_nvmlDeviceGetClockInfo(void* handle, int32_t clock, uint32_t* megahertz)
{
    return GiveByArgument("nvmlDeviceGetClockInfo", handle, clock, megahertz, &NvmlDeviceModel::clockInfo);
}

SIMULATED int32_t Sim_nvmlDeviceGetCurrPcieLinkGeneration(void* handle, uint32_t* generation)
{
    return GiveNumber("nvmlDeviceGetCurrPcieLinkGeneration", handle, generation, &NvmlDeviceModel::currentPcieGeneration);
}

SIMULATED int32_t Sim_nvmlDeviceGetMaxPcieLinkGeneration(void* handle, uint32_t* generation)
{
    return GiveNumber("nvmlDeviceGetMaxPcieLinkGeneration", handle, generation, &NvmlDeviceModel::maximumPcieGeneration);
}

SIMULATED int32_t Sim_nvmlDeviceGetMaxPcieLinkWidth(void* handle, uint32_t* lanes)
{
    return GiveNumber("nvmlDeviceGetMaxPcieLinkWidth", handle, lanes, &NvmlDeviceModel::maximumPcieWidth);
}

SIMULATED int32_t Sim_nvmlDeviceGetMemoryBusWidth(void* handle, uint32_t* bits)
{
    return GiveNumber("nvmlDeviceGetMemoryBusWidth", handle, bits, &NvmlDeviceModel::memoryBusWidth);
}
