#include "sources/Nvml.h"

#include <array>
#include <limits>
#include <string>

#include "interfaces/NvmlTypes.h"

namespace orvel::shared::inventory {

namespace {

using P = Property;

/// No computer has more; a larger count is not one.
constexpr unsigned int mostDevices = 256;

/// What a number is before a call writes it: outside of what any property can have.
constexpr auto notWritten = std::numeric_limits<uint64_t>::max();

class Nvml {
public:
    explicit Nvml(const FunctionLookup& find) : find(find) {}

    bool Has(const char* name) const { return find(name) != nullptr; }

    /// The status of a function; empty where the driver lacks it.
    template <typename... Parameters>
    std::optional<nvmlReturn_t> Call(const char* name, Parameters... parameters) const
    {
        using Function = nvmlReturn_t (*)(Parameters...);
        const auto function = reinterpret_cast<Function>(find(name));
        return function ? std::optional(function(parameters...)) : std::nullopt;
    }

    /// A number that a function writes behind its other arguments.
    template <typename Number = unsigned int, typename... Parameters>
    Answer ReadNumber(const char* name, Parameters... parameters) const
    {
        auto number = static_cast<Number>(notWritten);
        const auto status = Call(name, parameters..., &number);
        const bool isWritten = number != static_cast<Number>(notWritten);
        return DriverAnswer(status, NVML_ERROR_NOT_SUPPORTED,
                            isWritten ? Known(uint64_t{number}) : Unavailable(Reason::Unusable));
    }

    template <std::size_t Size, typename... Parameters>
    Answer ReadText(const char* name, Parameters... parameters) const
    {
        std::array<char, Size> text{};
        const auto status = Call(name, parameters..., text.data(), static_cast<unsigned int>(Size));
        return DriverAnswer(status, NVML_ERROR_NOT_SUPPORTED, DriverText(text.data(), text.size()));
    }

private:
    const FunctionLookup& find;
};

Answer BoardMemoryOf(const Nvml& nvml, nvmlDevice_t device)
{
    nvmlMemory_t memory{};
    const auto status = nvml.Call("nvmlDeviceGetMemoryInfo", device, &memory);
    return DriverAnswer(status, NVML_ERROR_NOT_SUPPORTED, Known(memory.total));
}

Answer ComputeCapabilityOf(const Nvml& nvml, nvmlDevice_t device)
{
    constexpr int most = 99;
    int major = 0, minor = 0;
    const auto status = nvml.Call("nvmlDeviceGetCudaComputeCapability", device, &major, &minor);
    const bool isUsable = major >= 1 && major <= most && minor >= 0 && minor <= most;
    return DriverAnswer(status, NVML_ERROR_NOT_SUPPORTED,
                        isUsable ? Known(std::to_string(major) + "." + std::to_string(minor))
                                 : Unavailable(Reason::Unusable));
}

Answer EccOf(const Nvml& nvml, nvmlDevice_t device)
{
    int current = -1, pending = -1;
    const auto status = nvml.Call("nvmlDeviceGetEccMode", device, &current, &pending);
    const bool isUsable = current == 0 || current == 1;
    return DriverAnswer(status, NVML_ERROR_NOT_SUPPORTED, isUsable ? Known(current == 1) : Unavailable(Reason::Unusable));
}

Answer EccErrorsOf(const Nvml& nvml, nvmlDevice_t device, int type)
{
    return nvml.ReadNumber<uint64_t>("nvmlDeviceGetTotalEccErrors", device, type, NVML_AGGREGATE_ECC);
}

std::map<Property, Answer> AnswersOf(const Nvml& nvml, nvmlDevice_t device)
{
    const auto number = [&](const char* name) { return nvml.ReadNumber(name, device); };
    const auto numberOf = [&](const char* name, int kind) { return nvml.ReadNumber(name, device, kind); };
    return {
        {P::DriverVersionMarketing, nvml.ReadText<NVML_SYSTEM_DRIVER_VERSION_BUFFER_SIZE>("nvmlSystemGetDriverVersion")},
        {P::BoardMemoryBytes, BoardMemoryOf(nvml, device)},
        {P::MemoryBusWidthBits, number("nvmlDeviceGetMemoryBusWidth")},
        {P::MemoryClockMaxMhz, numberOf("nvmlDeviceGetMaxClockInfo", NVML_CLOCK_MEM)},
        {P::CoreClockMaxMhz, numberOf("nvmlDeviceGetMaxClockInfo", NVML_CLOCK_GRAPHICS)},
        {P::CoreCount, number("nvmlDeviceGetNumGpuCores")},
        {P::ComputeCapability, ComputeCapabilityOf(nvml, device)},
        {P::PcieGeneration, number("nvmlDeviceGetCurrPcieLinkGeneration")},
        {P::PcieGenerationMax, number("nvmlDeviceGetGpuMaxPcieLinkGeneration")},
        {P::PcieLanes, number("nvmlDeviceGetCurrPcieLinkWidth")},
        {P::PcieLanesMax, number("nvmlDeviceGetMaxPcieLinkWidth")},
        {P::BiosVersion, nvml.ReadText<NVML_DEVICE_VBIOS_VERSION_BUFFER_SIZE>("nvmlDeviceGetVbiosVersion", device)},
        {P::SerialNumber, nvml.ReadText<NVML_DEVICE_SERIAL_BUFFER_SIZE>("nvmlDeviceGetSerial", device)},
        {P::Uuid, nvml.ReadText<NVML_DEVICE_UUID_V2_BUFFER_SIZE>("nvmlDeviceGetUUID", device)},
        {P::EccEnabled, EccOf(nvml, device)},
        {P::EccCorrectedErrors, EccErrorsOf(nvml, device, NVML_MEMORY_ERROR_TYPE_CORRECTED)},
        {P::EccUncorrectedErrors, EccErrorsOf(nvml, device, NVML_MEMORY_ERROR_TYPE_UNCORRECTED)},
        {P::TemperatureSlowdownCelsius, numberOf("nvmlDeviceGetTemperatureThreshold", NVML_TEMPERATURE_THRESHOLD_SLOWDOWN)},
        {P::TemperatureShutdownCelsius, numberOf("nvmlDeviceGetTemperatureThreshold", NVML_TEMPERATURE_THRESHOLD_SHUTDOWN)},
    };
}

DriverDevice DeviceOf(const nvmlPciInfo_t& place)
{
    DriverDevice device;
    device.address = {place.domain, place.bus, place.device, 0};
    device.vendorId = KnownIdentifier(place.pciDeviceId & 0xFFFF);
    device.deviceId = KnownIdentifier(place.pciDeviceId >> 16);
    device.subsystemId = KnownIdentifier(place.pciSubSystemId);
    return device;
}

/// One device that NVML does not describe does not keep the others from it.
void AddDevice(const Nvml& nvml, unsigned int index, DriverReading& reading)
{
    nvmlDevice_t handle = nullptr;
    nvmlPciInfo_t place{};
    place.bus = place.device = static_cast<uint32_t>(notWritten);
    auto status = nvml.Call("nvmlDeviceGetHandleByIndex_v2", index, &handle);
    if (status == NVML_SUCCESS && handle) {
        status = nvml.Call("nvmlDeviceGetPciInfo_v3", handle, &place);
    }
    if (status != NVML_SUCCESS || !handle) {
        const auto unusable = Unavailable(Reason::Unusable);
        reading.end = status == NVML_SUCCESS ? unusable : Failed(status.value_or(NVML_ERROR_UNKNOWN));
        return;
    }
    auto device = DeviceOf(place);
    device.answers = AnswersOf(nvml, handle);
    reading.devices.push_back(std::move(device));
}

/// NVML's state from its initialisation on.
class Session {
public:
    Session(const Nvml& nvml, bool& isStopped) : nvml(nvml), isStopped(isStopped) { this->isStopped = false; }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session() { isStopped = nvml.Call("nvmlShutdown") == NVML_SUCCESS; }

private:
    const Nvml& nvml;
    bool& isStopped;
};

DriverReading ReadDevices(const Nvml& nvml)
{
    DriverReading reading;
    unsigned int count = 0;
    const auto status = nvml.Call("nvmlDeviceGetCount_v2", &count);
    if (status != NVML_SUCCESS || count > mostDevices) {
        reading.end = status == NVML_SUCCESS ? Unavailable(Reason::Unusable) : Failed(*status);
        return reading;
    }
    for (unsigned int index = 0; index < count; ++index) {
        AddDevice(nvml, index, reading);
    }
    return reading;
}

} // namespace

DriverReading ReadNvml(const FunctionLookup& find, bool& isStopped)
{
    const Nvml nvml(find);
    isStopped = true;
    for (const auto* name : {"nvmlInit_v2", "nvmlShutdown", "nvmlDeviceGetCount_v2", "nvmlDeviceGetHandleByIndex_v2",
                             "nvmlDeviceGetPciInfo_v3"}) {
        if (!nvml.Has(name)) {
            return {Unavailable(Reason::NotPresent), {}};
        }
    }
    if (const auto status = nvml.Call("nvmlInit_v2"); status != NVML_SUCCESS) {
        return {Failed(*status), {}};
    }
    const Session session(nvml, isStopped);
    return ReadDevices(nvml);
}

} // namespace orvel::shared::inventory
