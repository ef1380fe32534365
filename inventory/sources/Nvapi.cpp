#include "sources/Nvapi.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "interfaces/NvapiTypes.h"

namespace orvel::shared::inventory {

namespace {

using enum enumeration::NvapiId;
using enumeration::NvAPI_Status;
using enumeration::NvPhysicalGpuHandle;
using P = Property;
using Handles = std::vector<NvPhysicalGpuHandle>;

class Nvapi {
public:
    explicit Nvapi(const NvapiLookup& find) : find(find) {}

    bool Has(enumeration::NvapiId id) const { return find(static_cast<uint32_t>(id)) != nullptr; }

    /// The status of a function; empty where the driver lacks it.
    template <typename... Parameters>
    std::optional<NvAPI_Status> Call(enumeration::NvapiId id, Parameters... parameters) const
    {
        using Function = NvAPI_Status (*)(Parameters...);
        const auto function = reinterpret_cast<Function>(find(static_cast<uint32_t>(id)));
        return function ? std::optional(function(parameters...)) : std::nullopt;
    }

    Answer ReadNumber(enumeration::NvapiId id, NvPhysicalGpuHandle gpu) const
    {
        uint32_t number = UINT32_MAX; // outside of what any property can have
        const auto status = Call(id, gpu, &number);
        return DriverAnswer(status, enumeration::NVAPI_NOT_SUPPORTED,
                            number == UINT32_MAX ? Unavailable(Reason::Unusable) : Known(uint64_t{number}));
    }

private:
    const NvapiLookup& find;
};

Answer IntegratedOf(const Nvapi& nvapi, NvPhysicalGpuHandle gpu)
{
    auto type = nvapi.ReadNumber(NvAPI_GPU_GetGPUType, gpu);
    if (!IsKnown(type)) {
        return type;
    }
    switch (*NumberOf(type)) {
    case enumeration::NV_SYSTEM_TYPE_IGPU:
        return Known(true);
    case enumeration::NV_SYSTEM_TYPE_DGPU:
        return Known(false);
    case 0:
        return Unavailable(Reason::Missing);
    default:
        return Unavailable(Reason::Unusable);
    }
}

/// The boost clock of a domain; nothing runs faster without its user's will.
Answer ClockOf(const enumeration::NvapiClockFrequencies& clocks, std::optional<NvAPI_Status> status, std::size_t domain)
{
    constexpr uint32_t kilohertzPerMegahertz = 1000;
    const auto& clock = clocks.Domains[domain];
    const bool isPresent = (clock.IsPresent & 1) != 0;
    return DriverAnswer(status, enumeration::NVAPI_NOT_SUPPORTED,
                        isPresent ? Known(uint64_t{clock.Kilohertz / kilohertzPerMegahertz}) : Unavailable(Reason::Missing));
}

std::map<Property, Answer> AnswersOf(const Nvapi& nvapi, NvPhysicalGpuHandle gpu)
{
    enumeration::NvapiClockFrequencies clocks{};
    clocks.Version = enumeration::NvapiVersion<enumeration::NvapiClockFrequencies>(3);
    clocks.ClockType = enumeration::NVAPI_GPU_CLOCK_TYPE_BOOST;
    const auto status = nvapi.Call(NvAPI_GPU_GetAllClockFrequencies, gpu, &clocks);
    return {
        {P::Integrated, IntegratedOf(nvapi, gpu)},
        {P::MemoryBusWidthBits, nvapi.ReadNumber(NvAPI_GPU_GetRamBusWidth, gpu)},
        {P::MemoryClockMaxMhz, ClockOf(clocks, status, enumeration::NVAPI_GPU_PUBLIC_CLOCK_MEMORY)},
        {P::CoreClockMaxMhz, ClockOf(clocks, status, enumeration::NVAPI_GPU_PUBLIC_CLOCK_GRAPHICS)},
        {P::CoreCount, nvapi.ReadNumber(NvAPI_GPU_GetGpuCoreCount, gpu)},
    };
}

/// The LUID of the logical GPU, unless it has several physical ones, which share it.
std::optional<uint64_t> LuidOf(const Nvapi& nvapi, NvPhysicalGpuHandle gpu)
{
    NvPhysicalGpuHandle logical = nullptr;
    if (nvapi.Call(NvAPI_GetLogicalGPUFromPhysicalGPU, gpu, &logical) != enumeration::NVAPI_OK || !logical) {
        return {};
    }
    uint64_t luid = 0;
    enumeration::NvapiLogicalGpuInfo info{};
    info.Version = enumeration::NvapiVersion<enumeration::NvapiLogicalGpuInfo>(1);
    info.Luid = &luid;
    const auto status = nvapi.Call(NvAPI_GPU_GetLogicalGpuInfo, logical, &info);
    return status == enumeration::NVAPI_OK && info.PhysicalGpuCount == 1 && luid != 0 ? std::optional(luid) : std::nullopt;
}

void AddIdentifiers(const Nvapi& nvapi, NvPhysicalGpuHandle gpu, DriverDevice& device)
{
    uint32_t identifiers = 0, subsystem = 0, revision = 0, extended = 0;
    const auto status = nvapi.Call(NvAPI_GPU_GetPCIIdentifiers, gpu, &identifiers, &subsystem, &revision, &extended);
    if (status != enumeration::NVAPI_OK || identifiers == 0) {
        return;
    }
    device.vendorId = KnownIdentifier(identifiers & 0xFFFF);
    device.deviceId = KnownIdentifier(identifiers >> 16);
    device.subsystemId = KnownIdentifier(subsystem);
    device.revision = revision;
}

/// A GPU about whose place and identity NVAPI says nothing is nobody's.
void AddGpu(const Nvapi& nvapi, NvPhysicalGpuHandle gpu, DriverReading& reading)
{
    DriverDevice device;
    const auto bus = nvapi.ReadNumber(NvAPI_GPU_GetBusId, gpu);
    device.address.bus = NumberOf(bus);
    device.address.device = NumberOf(nvapi.ReadNumber(NvAPI_GPU_GetBusSlotId, gpu));
    device.luid = LuidOf(nvapi, gpu);
    AddIdentifiers(nvapi, gpu, device);
    if (!device.luid && !device.address.bus && !device.deviceId) {
        reading.end = bus;
        return;
    }
    device.answers = AnswersOf(nvapi, gpu);
    reading.devices.push_back(std::move(device));
}

/// The GPUs that a function lists. The documented number for none is no failure.
std::optional<NvAPI_Status> ListGpus(const Nvapi& nvapi, enumeration::NvapiId function, Handles& gpus)
{
    std::array<NvPhysicalGpuHandle, enumeration::NVAPI_MAX_PHYSICAL_GPUS> handles{};
    uint32_t count = 0;
    const auto status = nvapi.Call(function, handles.data(), &count);
    if (status != enumeration::NVAPI_OK) {
        return status;
    }
    const auto end = handles.begin() + std::min<std::size_t>(count, handles.size());
    std::copy_if(handles.begin(), end, std::back_inserter(gpus),
                 [&](NvPhysicalGpuHandle gpu) { return gpu && std::find(gpus.begin(), gpus.end(), gpu) == gpus.end(); });
    return status;
}

/// NVAPI's state from its initialisation on.
class Session {
public:
    Session(const Nvapi& nvapi, bool& isStopped) : nvapi(nvapi), isStopped(isStopped) { this->isStopped = false; }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session() { isStopped = nvapi.Call(NvAPI_Unload) == enumeration::NVAPI_OK; }

private:
    const Nvapi& nvapi;
    bool& isStopped;
};

DriverReading ReadGpus(const Nvapi& nvapi)
{
    DriverReading reading;
    Handles gpus;
    const auto forDisplay = ListGpus(nvapi, NvAPI_EnumPhysicalGPUs, gpus);
    const auto forComputing = ListGpus(nvapi, NvAPI_EnumTCCPhysicalGPUs, gpus);
    const auto isComplete = [](std::optional<NvAPI_Status> status) {
        return !status || status == enumeration::NVAPI_OK || status == enumeration::NVAPI_NVIDIA_DEVICE_NOT_FOUND ||
               status == enumeration::NVAPI_NOT_SUPPORTED;
    };
    if (!isComplete(forDisplay) || (gpus.empty() && forDisplay != enumeration::NVAPI_OK)) {
        reading.end = Failed(*forDisplay);
    } else if (!isComplete(forComputing)) {
        reading.end = Failed(*forComputing);
    }
    for (auto* const gpu : gpus) {
        AddGpu(nvapi, gpu, reading);
    }
    return reading;
}

} // namespace

DriverReading ReadNvapi(const NvapiLookup& find, bool& isStopped)
{
    const Nvapi nvapi(find);
    isStopped = true;
    for (const auto id : {NvAPI_Initialize, NvAPI_Unload, NvAPI_EnumPhysicalGPUs}) {
        if (!nvapi.Has(id)) {
            return {Unavailable(Reason::NotPresent), {}};
        }
    }
    if (const auto status = nvapi.Call(NvAPI_Initialize); status != enumeration::NVAPI_OK) {
        return {Failed(*status), {}};
    }
    const Session session(nvapi, isStopped);
    return ReadGpus(nvapi);
}

} // namespace orvel::shared::inventory
