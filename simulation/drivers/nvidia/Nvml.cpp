#include <atomic>
#include <cstdio>
#include <map>
#include <string>

#include "drivers/HandleTable.h"
#include "loading/DriverState.h"
#include "loading/Export.h"
#include "machine/CurrentMachine.h"
#include "trace/Hangs.h"
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
int32_t OnDevice(const std::string& call, const void* handle, Give&& give, uint32_t length = 0)
{
    AddToTrace(call, {handle, length});
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

void PutText(char* target, uint32_t length, const std::string& text, bool isTerminated)
{
    FillWithRubbish({{target, length}});
    text.copy(target, length);
    if (isTerminated) {
        target[text.size()] = '\0';
    }
}

/// A text of at most `longest` characters, that fits into the caller's buffer.
int32_t GiveText(const std::string& call, const Answer<std::string>& answer, char* target, uint32_t length, size_t longest)
{
    if (!target) {
        return RefuseNull(call);
    }
    const bool isTerminated = answer.writes != Writes::Unterminated;
    if (answer.value && isTerminated && (answer.value->size() > longest || answer.value->size() >= length)) {
        return NVML_ERROR_INSUFFICIENT_SIZE;
    }
    return answer.Give(NVML_ERROR_NOT_SUPPORTED, {{target, length}},
                       [&](const std::string& text) { PutText(target, length, text, isTerminated); });
}

int32_t GiveText(const char* name, const void* handle, char* target, uint32_t length,
                 Answer<std::string> NvmlDeviceModel::*member, size_t longest)
{
    const std::string call = std::string("nvml ") + name;
    const auto give = [&](const NvmlDeviceModel& device) { return GiveText(call, device.*member, target, length, longest); };
    return OnDevice(call, handle, give, length);
}

/// A function that writes two numbers.
int32_t GivePair(const char* name, const void* handle, int32_t* first, int32_t* second,
                 Answer<std::array<int32_t, 2>> NvmlDeviceModel::*member)
{
    const std::string call = std::string("nvml ") + name;
    return OnDevice(call, handle, [&](const NvmlDeviceModel& device) {
        if (!first || !second) {
            return RefuseNull(call);
        }
        const auto write = [&](const std::array<int32_t, 2>& pair) {
            *first = pair[0];
            *second = pair[1];
        };
        return (device.*member).Give(NVML_ERROR_NOT_SUPPORTED, {{first, sizeof *first}, {second, sizeof *second}}, write);
    });
}

/// nvmlPciInfo_t, with the published offsets.
struct PciInfoArea {
    char busIdLegacy[16];
    uint32_t domain;
    uint32_t bus;
    uint32_t device;
    uint32_t pciDeviceId;
    uint32_t pciSubSystemId;
    char busId[32];
};
static_assert(sizeof(PciInfoArea) == 68);

void PutPciInfo(PciInfoArea& area, const NvmlPciInfo& info)
{
    FillWithRubbish({{&area, sizeof area}});
    const unsigned int bus = info.bus & 0xFF, device = info.device & 0xFF;
    std::snprintf(area.busIdLegacy, sizeof area.busIdLegacy, "%04X:%02X:%02X.0", info.domain & 0xFFFF, bus, device);
    std::snprintf(area.busId, sizeof area.busId, "%08X:%02X:%02X.0", info.domain, bus, device);
    area.domain = info.domain;
    area.bus = info.bus;
    area.device = info.device;
    area.pciDeviceId = info.pciDeviceId;
    area.pciSubSystemId = info.pciSubSystemId;
}

constexpr size_t anyLength = SIZE_MAX; // of a text that only the caller's buffer limits

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
    if (IsAbandoned()) {
        return NVML_ERROR_UNINITIALIZED;
    }
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
    if (initialisations == 0 || IsAbandoned()) {
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

SIMULATED int32_t Sim_nvmlSystemGetDriverVersion(char* text, uint32_t length)
{
    const std::string call = "nvml nvmlSystemGetDriverVersion";
    AddToTrace(call, {nullptr, length});
    if (initialisations == 0) {
        return NVML_ERROR_UNINITIALIZED;
    }
    return GiveText(call, CurrentMachine()->nvml.model.driverVersion, text, length, anyLength);
}

SIMULATED int32_t Sim_nvmlDeviceGetSerial(void* handle, char* text, uint32_t length)
{
    return GiveText("nvmlDeviceGetSerial", handle, text, length, &NvmlDeviceModel::serial, longestSerial);
}

SIMULATED int32_t Sim_nvmlDeviceGetUUID(void* handle, char* text, uint32_t length)
{
    return GiveText("nvmlDeviceGetUUID", handle, text, length, &NvmlDeviceModel::uuid, anyLength);
}

SIMULATED int32_t Sim_nvmlDeviceGetVbiosVersion(void* handle, char* text, uint32_t length)
{
    return GiveText("nvmlDeviceGetVbiosVersion", handle, text, length, &NvmlDeviceModel::vbiosVersion, anyLength);
}

SIMULATED int32_t Sim_nvmlDeviceGetCudaComputeCapability(void* handle, int32_t* major, int32_t* minor)
{
    return GivePair("nvmlDeviceGetCudaComputeCapability", handle, major, minor, &NvmlDeviceModel::cudaComputeCapability);
}

SIMULATED int32_t Sim_nvmlDeviceGetEccMode(void* handle, int32_t* current, int32_t* pending)
{
    return GivePair("nvmlDeviceGetEccMode", handle, current, pending, &NvmlDeviceModel::eccMode);
}

SIMULATED int32_t Sim_nvmlDeviceGetTotalEccErrors(void* handle, int32_t type, int32_t counter, uint64_t* errors)
{
    const std::string call = "nvml nvmlDeviceGetTotalEccErrors " + std::to_string(type) + "," + std::to_string(counter);
    return OnDevice(call, handle, [&](const NvmlDeviceModel& device) {
        if (!errors) {
            return RefuseNull(call);
        }
        int32_t status = NVML_SUCCESS;
        const auto write = [&](const NvmlCounters& counters) {
            const auto answer = counters.find({type, counter});
            status = answer == counters.end() ? NVML_ERROR_NOT_SUPPORTED
                                              : answer->second.GiveTo(errors, NVML_ERROR_NOT_SUPPORTED);
        };
        const int32_t whole = device.totalEccErrors.Give(NVML_ERROR_NOT_SUPPORTED, {{errors, sizeof *errors}}, write);
        return whole != NVML_SUCCESS ? whole : status;
    });
}

SIMULATED int32_t Sim_nvmlDeviceGetPciInfo_v3(void* handle, PciInfoArea* area)
{
    const std::string call = "nvml nvmlDeviceGetPciInfo_v3";
    return OnDevice(call, handle, [&](const NvmlDeviceModel& device) {
        if (!area) {
            return RefuseNull(call);
        }
        return device.pciInfo.Give(NVML_ERROR_NOT_SUPPORTED, {{area, sizeof *area}},
                                   [&](const NvmlPciInfo& info) { PutPciInfo(*area, info); });
    });
}

SIMULATED int32_t Sim_nvmlDeviceGetMemoryInfo(void* handle, NvmlMemory* memory)
{
    const std::string call = "nvml nvmlDeviceGetMemoryInfo";
    return OnDevice(call, handle, [&](const NvmlDeviceModel& device) {
        return memory ? device.memoryInfo.GiveTo(memory, NVML_ERROR_NOT_SUPPORTED) : RefuseNull(call);
    });
}

SIMULATED int32_t Sim_nvmlDeviceGetMaxClockInfo(void* handle, int32_t clock, uint32_t* megahertz)
{
    return GiveByArgument("nvmlDeviceGetMaxClockInfo", handle, clock, megahertz, &NvmlDeviceModel::maxClockInfo);
}

SIMULATED int32_t Sim_nvmlDeviceGetNumGpuCores(void* handle, uint32_t* count)
{
    return GiveNumber("nvmlDeviceGetNumGpuCores", handle, count, &NvmlDeviceModel::numGpuCores);
}

SIMULATED int32_t Sim_nvmlDeviceGetCurrPcieLinkWidth(void* handle, uint32_t* lanes)
{
    return GiveNumber("nvmlDeviceGetCurrPcieLinkWidth", handle, lanes, &NvmlDeviceModel::currentPcieWidth);
}

SIMULATED int32_t Sim_nvmlDeviceGetGpuMaxPcieLinkGeneration(void* handle, uint32_t* generation)
{
    return GiveNumber("nvmlDeviceGetGpuMaxPcieLinkGeneration", handle, generation,
                      &NvmlDeviceModel::gpuMaximumPcieGeneration);
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
