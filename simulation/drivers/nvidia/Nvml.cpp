#include <atomic>
#include <map>
#include <string>

#include "drivers/HandleTable.h"
#include "loading/DriverState.h"
#include "loading/Export.h"
#include "machine/CurrentMachine.h"
#include "trace/Trace.h"
#include "trace/Violations.h"

using namespace orvel::simulation;

namespace {

constexpr int32_t NVML_SUCCESS = 0;
constexpr int32_t NVML_ERROR_UNINITIALIZED = 1;
constexpr int32_t NVML_ERROR_INVALID_ARGUMENT = 2;
constexpr int32_t NVML_ERROR_NOT_SUPPORTED = 3;
constexpr int32_t NVML_ERROR_INSUFFICIENT_SIZE = 7;
constexpr int32_t NVML_ERROR_DRIVER_NOT_LOADED = 9;
constexpr size_t longestSerial = 29; // characters

std::atomic<int> initialisations = 0;

/// The devices' handles, which are valid until the last shutdown.
HandleTable<NvmlDeviceModel>& deviceHandles = *new HandleTable<NvmlDeviceModel>;

const DriverState state([] {
    initialisations = 0;
    deviceHandles.Clear();
});

/// Traces the call and runs `give` on the model of the device of this handle. A null handle is not a violation: the caller
/// may have failed to get a handle.
template <typename Give>
int32_t OnDevice(const std::string& call, const void* handle, Give&& give)
{
    AddToTrace(call);
    const auto machine = CurrentMachine(); // keeps the model alive
    if (const NvmlDeviceModel* const device = deviceHandles.Find(handle)) {
        return give(*device);
    }
    if (handle) {
        AddViolation(call, "the handle is not of this session");
    }
    return initialisations == 0 ? NVML_ERROR_UNINITIALIZED : NVML_ERROR_INVALID_ARGUMENT;
}

int32_t RefuseNull(const std::string& call)
{
    return Refuse(call, "a null pointer", NVML_ERROR_INVALID_ARGUMENT);
}

int32_t GiveNumber(const char* name, const void* handle, uint32_t* target, Answer<uint32_t> NvmlDeviceModel::*member)
{
    const std::string call = std::string("nvml ") + name;
    return OnDevice(call, handle, [&](const NvmlDeviceModel& device) {
        if (!target) {
            return RefuseNull(call);
        }
        return (device.*member).GiveTo(target, NVML_ERROR_NOT_SUPPORTED);
    });
}

/// A function whose answer depends on its second argument. A status for the whole function applies to every argument.
int32_t GiveByArgument(const char* name, const void* handle, int32_t argument, uint32_t* target,
                       Answer<NvmlAnswers> NvmlDeviceModel::*member)
{
    const std::string call = std::string("nvml ") + name + " " + std::to_string(argument);
    return OnDevice(call, handle, [&](const NvmlDeviceModel& device) {
        if (!target) {
            return RefuseNull(call);
        }
        int32_t status = NVML_SUCCESS;
        const int32_t whole =
            (device.*member).Give(NVML_ERROR_NOT_SUPPORTED, {{target, sizeof *target}}, [&](const NvmlAnswers& answers) {
                const auto answer = answers.find(argument);
                status = answer == answers.end() ? NVML_ERROR_NOT_SUPPORTED
                                                 : answer->second.GiveTo(target, NVML_ERROR_NOT_SUPPORTED);
            });
        return whole != NVML_SUCCESS ? whole : status;
    });
}

void PutSerial(char* target, uint32_t length, const std::string& text, bool isTerminated)
{
    FillWithRubbish({{target, length}});
    text.copy(target, length);
    if (isTerminated) {
        target[text.size()] = '\0';
    }
}

int32_t GiveSerial(const NvmlDeviceModel& device, char* target, uint32_t length)
{
    const Answer<std::string>& serial = device.serial;
    const bool isTerminated = serial.writes != Writes::Unterminated;
    if (serial.value && isTerminated && (serial.value->size() > longestSerial || serial.value->size() >= length)) {
        return NVML_ERROR_INSUFFICIENT_SIZE;
    }
    return serial.Give(NVML_ERROR_NOT_SUPPORTED, {{target, length}},
                       [&](const std::string& text) { PutSerial(target, length, text, isTerminated); });
}

/// The text that NVML has for a status code.
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

SIMULATED int32_t Sim_nvmlInit_v2()
{
    AddToTrace("nvml nvmlInit_v2");
    const auto machine = CurrentMachine();
    if (machine->nvml.standing != Standing::Simulated) {
        return NVML_ERROR_DRIVER_NOT_LOADED;
    }
    if (machine->nvml.model.init.code != NVML_SUCCESS) {
        return machine->nvml.model.init.code;
    }
    ++initialisations;
    CountLive(Counted::Nvml, 1);
    return NVML_SUCCESS;
}

SIMULATED int32_t Sim_nvmlShutdown()
{
    AddToTrace("nvml nvmlShutdown");
    if (initialisations == 0) {
        return NVML_ERROR_UNINITIALIZED;
    }
    if (const int32_t status = CurrentMachine()->nvml.model.shutdown.code; status != NVML_SUCCESS) {
        return status;
    }
    CountLive(Counted::Nvml, -1);
    if (--initialisations == 0) {
        deviceHandles.Clear();
    }
    return NVML_SUCCESS;
}

SIMULATED const char* Sim_nvmlErrorString(int32_t status)
{
    AddToTrace("nvml nvmlErrorString " + std::to_string(status));
    const auto machine = CurrentMachine();
    const auto& texts = machine->nvml.model.errorTexts;
    const auto text = texts.find(status);
    return text == texts.end() ? ErrorText(status) : text->second.c_str();
}

SIMULATED int32_t Sim_nvmlDeviceGetCount_v2(uint32_t* count)
{
    const std::string call = "nvml nvmlDeviceGetCount_v2";
    AddToTrace(call);
    if (initialisations == 0) {
        return NVML_ERROR_UNINITIALIZED;
    }
    if (!count) {
        return RefuseNull(call);
    }
    const auto machine = CurrentMachine();
    const NvmlModel& model = machine->nvml.model;
    if (model.deviceCount.given) {
        return model.deviceCount.GiveTo(count, NVML_ERROR_NOT_SUPPORTED);
    }
    *count = static_cast<uint32_t>(model.devices.size());
    return NVML_SUCCESS;
}

SIMULATED int32_t Sim_nvmlDeviceGetHandleByIndex_v2(uint32_t index, void** handle)
{
    const std::string call = "nvml nvmlDeviceGetHandleByIndex_v2 " + std::to_string(index);
    AddToTrace(call);
    if (initialisations == 0) {
        return NVML_ERROR_UNINITIALIZED;
    }
    if (!handle) {
        return RefuseNull(call);
    }
    const auto machine = CurrentMachine();
    const auto& devices = machine->nvml.model.devices;
    if (index >= devices.size()) {
        return NVML_ERROR_INVALID_ARGUMENT;
    }
    const OutputStatus& answer = devices[index].handle;
    if (answer.writes == Writes::Rubbish) {
        FillWithRubbish({{handle, sizeof *handle}});
    } else if (answer.code == NVML_SUCCESS && answer.writes == Writes::AsUsual) {
        *handle = deviceHandles.HandleOf(devices[index]);
    }
    return answer.code;
}

SIMULATED int32_t Sim_nvmlDeviceGetSerial(void* handle, char* text, uint32_t length)
{
    const std::string call = "nvml nvmlDeviceGetSerial";
    return OnDevice(call, handle, [&](const NvmlDeviceModel& device) {
        return text ? GiveSerial(device, text, length) : RefuseNull(call);
    });
}

SIMULATED int32_t Sim_nvmlDeviceGetCudaComputeCapability(void* handle, int32_t* major, int32_t* minor)
{
    const std::string call = "nvml nvmlDeviceGetCudaComputeCapability";
    return OnDevice(call, handle, [&](const NvmlDeviceModel& device) {
        if (!major || !minor) {
            return RefuseNull(call);
        }
        return device.cudaComputeCapability.Give(NVML_ERROR_NOT_SUPPORTED, {{major, sizeof *major}, {minor, sizeof *minor}},
                                                 [&](const std::array<int32_t, 2>& version) {
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
