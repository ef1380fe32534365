#include "Interfaces.h"

#include <algorithm>
#include <array>

#include "interfaces/NvapiTypes.h"
#include "platform/Handles.h"
#include "vendors/nvidia/NvidiaFormulas.h"

namespace orvel::recorder {

using namespace orvel::shared::enumeration;

namespace {

struct Function {
    const char* Name; ///< in a machine file
    NvapiId Id;
};

/// Those that an enumeration and an inventory call.
constexpr Function functions[] = {
    {"NvAPI_Initialize", NvapiId::NvAPI_Initialize},
    {"NvAPI_Unload", NvapiId::NvAPI_Unload},
    {"NvAPI_EnumPhysicalGPUs", NvapiId::NvAPI_EnumPhysicalGPUs},
    {"NvAPI_GPU_GetFullName", NvapiId::NvAPI_GPU_GetFullName},
    {"NvAPI_GPU_GetBusId", NvapiId::NvAPI_GPU_GetBusId},
    {"NvAPI_GPU_GetBusType", NvapiId::NvAPI_GPU_GetBusType},
    {"NvAPI_GPU_GetPCIIdentifiers", NvapiId::NvAPI_GPU_GetPCIIdentifiers},
    {"NvAPI_GPU_GetGPUType", NvapiId::NvAPI_GPU_GetGPUType},
    {"NvAPI_GPU_GetVbiosVersionString", NvapiId::NvAPI_GPU_GetVbiosVersionString},
    {"NvAPI_GPU_GetGpuCoreCount", NvapiId::NvAPI_GPU_GetGpuCoreCount},
    {"NvAPI_GPU_GetRamBusWidth", NvapiId::NvAPI_GPU_GetRamBusWidth},
    {"NvAPI_GPU_GetCurrentPCIEDownstreamWidth", NvapiId::NvAPI_GPU_GetCurrentPCIEDownstreamWidth},
    {"NvAPI_GPU_GetMemoryInfoEx", NvapiId::NvAPI_GPU_GetMemoryInfoEx},
    {"NvAPI_GPU_GetAllClockFrequencies", NvapiId::NvAPI_GPU_GetAllClockFrequencies},
    {"NvAPI_GPU_GetECCStatusInfo", NvapiId::NvAPI_GPU_GetECCStatusInfo},
    {"NvAPI_GPU_GetECCErrorInfo", NvapiId::NvAPI_GPU_GetECCErrorInfo},
    {"0xD2D25687", NvapiId::NvAPI_D3D11_MultiGPU_GetCaps},
    {"NvAPI_EnumTCCPhysicalGPUs", NvapiId::NvAPI_EnumTCCPhysicalGPUs},
    {"NvAPI_GPU_GetBusSlotId", NvapiId::NvAPI_GPU_GetBusSlotId},
    {"NvAPI_GetLogicalGPUFromPhysicalGPU", NvapiId::NvAPI_GetLogicalGPUFromPhysicalGPU},
    {"NvAPI_GPU_GetLogicalGpuInfo", NvapiId::NvAPI_GPU_GetLogicalGpuInfo},
};

constexpr uint32_t clockTypes[] = {0, 4}; // which an enumeration asks for

using Gpu = NvPhysicalGpuHandle;

/// A loaded nvapi64.dll.
class Nvapi {
public:
    explicit Nvapi(HMODULE module) : queryInterface(FindFunction<QueryInterface>(module, "nvapi_QueryInterface")) {}

    bool Has(NvapiId id) const { return queryInterface && queryInterface(static_cast<uint32_t>(id)); }

    template <typename... Parameters>
    NvAPI_Status Call(NvapiId id, Parameters... parameters) const
    {
        using Called = NvAPI_Status (*)(Parameters...);
        const auto function = queryInterface ? reinterpret_cast<Called>(queryInterface(static_cast<uint32_t>(id))) : nullptr;
        return function ? function(parameters...) : NVAPI_NO_IMPLEMENTATION;
    }

    /// The functions that the driver does not have.
    Json Unresolved() const
    {
        if (!queryInterface) {
            return Json::array({"nvapi_QueryInterface"});
        }
        Json unresolved = Json::array();
        for (const Function& function : functions) {
            if (!Has(function.Id)) {
                unresolved.push_back(function.Name);
            }
        }
        return unresolved;
    }

private:
    using QueryInterface = void* (*)(uint32_t id);

    QueryInterface queryInterface;
};

template <typename Number = uint32_t>
Json RecordNumber(const Nvapi& nvapi, Gpu gpu, NvapiId id)
{
    return RecordNumberOf<Number>([&](Number* number) { return nvapi.Call(id, gpu, number); });
}

Json RecordText(const Nvapi& nvapi, Gpu gpu, NvapiId id)
{
    return RecordTextOf<NVAPI_SHORT_STRING_MAX>([&](char* text) { return nvapi.Call(id, gpu, text); });
}

Json RecordIdentifiers(const Nvapi& nvapi, Gpu gpu, std::string& deviceId)
{
    uint32_t device = 0;
    uint32_t subsystem = 0;
    uint32_t revision = 0;
    uint32_t extended = 0;
    const NvAPI_Status status =
        nvapi.Call(NvapiId::NvAPI_GPU_GetPCIIdentifiers, gpu, &device, &subsystem, &revision, &extended);
    deviceId = status == NVAPI_OK ? NvidiaDeviceId(device) : "";
    return Answer(status, {{"device", device}, {"subsystem", subsystem}, {"revision", revision}, {"extended", extended}});
}

/// An enumeration makes two calls with one structure, and reads another member after each.
Json RecordMemory(const Nvapi& nvapi, Gpu gpu)
{
    NvapiMemoryInfo info{};
    const NvAPI_Status status = nvapi.Call(NvapiId::NvAPI_GPU_GetMemoryInfoEx, gpu, &info);
    const uint64_t shared = info.SharedSystemMemory;
    nvapi.Call(NvapiId::NvAPI_GPU_GetMemoryInfoEx, gpu, &info);
    return Answer(status, {{"offset32", shared}, {"offset40", info.CurrentAvailableDedicatedVideoMemory}});
}

Json ClockOf(const NvapiClockDomain& domain)
{
    return {{"present", (domain.IsPresent & 1) != 0}, {"kHz", domain.Kilohertz}};
}

Json RecordClocks(const Nvapi& nvapi, Gpu gpu, uint32_t type)
{
    NvapiClockFrequencies clocks{};
    clocks.Version = NvapiVersion<NvapiClockFrequencies>(3);
    clocks.ClockType = type;
    const NvAPI_Status status = nvapi.Call(NvapiId::NvAPI_GPU_GetAllClockFrequencies, gpu, &clocks);
    return Answer(status, {{"domain0", ClockOf(clocks.Domains[NVAPI_GPU_PUBLIC_CLOCK_GRAPHICS])},
                           {"domain4", ClockOf(clocks.Domains[NVAPI_GPU_PUBLIC_CLOCK_MEMORY])}});
}

Json RecordEccStatus(const Nvapi& nvapi, Gpu gpu)
{
    NvapiEccStatusInfo info{};
    info.Version = NvapiVersion<NvapiEccStatusInfo>(1);
    const NvAPI_Status status = nvapi.Call(NvapiId::NvAPI_GPU_GetECCStatusInfo, gpu, &info);
    return Answer(status, {{"supported", info.Supported}, {"enabled", info.Enabled}});
}

Json RecordEccErrors(const Nvapi& nvapi, Gpu gpu)
{
    NvapiEccErrorInfo info{};
    info.Version = NvapiVersion<NvapiEccErrorInfo>(1);
    const NvAPI_Status status = nvapi.Call(NvapiId::NvAPI_GPU_GetECCErrorInfo, gpu, &info);
    return Answer(status, {{"single", info.CurrentSingleBitErrors}, {"double", info.CurrentDoubleBitErrors}});
}

Json RecordMultiGpu(const Nvapi& nvapi)
{
    NvapiMultiGpuCaps caps{};
    caps.Version = NvapiVersion<NvapiMultiGpuCaps>(2);
    const NvAPI_Status status = nvapi.Call(NvapiId::NvAPI_D3D11_MultiGPU_GetCaps, &caps);
    return Answer(status, Json::array({caps.TotalGpus, caps.SliGpus}));
}

Json RecordGpu(const Nvapi& nvapi, Gpu gpu, std::string& deviceId)
{
    using enum NvapiId;
    Json answers = {
        {"NvAPI_GPU_GetFullName", RecordText(nvapi, gpu, NvAPI_GPU_GetFullName)},
        {"NvAPI_GPU_GetPCIIdentifiers", RecordIdentifiers(nvapi, gpu, deviceId)},
        {"NvAPI_GPU_GetBusId", RecordNumber(nvapi, gpu, NvAPI_GPU_GetBusId)},
        {"NvAPI_GPU_GetBusType", RecordNumber<int32_t>(nvapi, gpu, NvAPI_GPU_GetBusType)},
        {"NvAPI_GPU_GetGPUType", RecordNumber<int32_t>(nvapi, gpu, NvAPI_GPU_GetGPUType)},
        {"NvAPI_GPU_GetVbiosVersionString", RecordText(nvapi, gpu, NvAPI_GPU_GetVbiosVersionString)},
        {"NvAPI_GPU_GetGpuCoreCount", RecordNumber(nvapi, gpu, NvAPI_GPU_GetGpuCoreCount)},
        {"NvAPI_GPU_GetRamBusWidth", RecordNumber(nvapi, gpu, NvAPI_GPU_GetRamBusWidth)},
        {"NvAPI_GPU_GetCurrentPCIEDownstreamWidth", RecordNumber(nvapi, gpu, NvAPI_GPU_GetCurrentPCIEDownstreamWidth)},
        {"NvAPI_GPU_GetMemoryInfoEx", RecordMemory(nvapi, gpu)},
        {"NvAPI_GPU_GetAllClockFrequencies", Json::object()},
        {"NvAPI_GPU_GetECCStatusInfo", RecordEccStatus(nvapi, gpu)},
        {"NvAPI_GPU_GetECCErrorInfo", RecordEccErrors(nvapi, gpu)},
    };
    for (const uint32_t type : clockTypes) {
        answers["NvAPI_GPU_GetAllClockFrequencies"][std::to_string(type)] = RecordClocks(nvapi, gpu, type);
    }
    return answers;
}

/// The LUID of a logical GPU, which the call writes to the caller's memory.
Json RecordLogicalGpuInfo(const Nvapi& nvapi, Gpu logical)
{
    uint64_t luid = 0;
    NvapiLogicalGpuInfo info{};
    info.Version = NvapiVersion<NvapiLogicalGpuInfo>(1);
    info.Luid = &luid;
    const NvAPI_Status status = nvapi.Call(NvapiId::NvAPI_GPU_GetLogicalGpuInfo, logical, &info);
    return Answer(status, {{"luid", luid}, {"physicalGpuCount", info.PhysicalGpuCount}});
}

/// Adds what only an inventory asks.
void RecordForInventory(const Nvapi& nvapi, Gpu gpu, Json& answers)
{
    answers["NvAPI_GPU_GetBusSlotId"] = RecordNumber(nvapi, gpu, NvapiId::NvAPI_GPU_GetBusSlotId);
    answers["NvAPI_GPU_GetAllClockFrequencies"][std::to_string(NVAPI_GPU_CLOCK_TYPE_BOOST)] =
        RecordClocks(nvapi, gpu, NVAPI_GPU_CLOCK_TYPE_BOOST);
    Gpu logical = nullptr;
    const NvAPI_Status status = nvapi.Call(NvapiId::NvAPI_GetLogicalGPUFromPhysicalGPU, gpu, &logical);
    answers["NvAPI_GetLogicalGPUFromPhysicalGPU"] = status;
    if (status == NVAPI_OK && logical) {
        answers["NvAPI_GPU_GetLogicalGpuInfo"] = RecordLogicalGpuInfo(nvapi, logical);
    }
}

/// The GPUs that a function lists.
std::vector<Gpu> ListGpus(const Nvapi& nvapi, NvapiId id, NvAPI_Status& status)
{
    std::array<Gpu, NVAPI_MAX_PHYSICAL_GPUS> handles{};
    uint32_t count = 0;
    status = nvapi.Call(id, handles.data(), &count);
    const size_t gpus = status == NVAPI_OK ? std::min<size_t>(count, handles.size()) : 0;
    return std::vector<Gpu>(handles.begin(), handles.begin() + static_cast<std::ptrdiff_t>(gpus));
}

std::vector<Gpu> RecordForEnumeration(const Nvapi& nvapi, NvapiRecording& recording)
{
    Json& section = *recording.Section;
    NvAPI_Status status = NVAPI_OK;
    auto gpus = ListGpus(nvapi, NvapiId::NvAPI_EnumPhysicalGPUs, status);
    section["NvAPI_EnumPhysicalGPUs"] = status;
    section["0xD2D25687"] = RecordMultiGpu(nvapi);
    section["gpus"] = Json::array();
    for (Gpu gpu : gpus) {
        std::string deviceId;
        section["gpus"].push_back(RecordGpu(nvapi, gpu, deviceId));
        recording.DeviceId = recording.DeviceId.value_or(deviceId);
    }
    return gpus;
}

/// The GPUs that only compute are listed apart, if at all.
void RecordForInventory(const Nvapi& nvapi, const std::vector<Gpu>& displaying, Json& section)
{
    NvAPI_Status status = NVAPI_OK;
    const auto computing = ListGpus(nvapi, NvapiId::NvAPI_EnumTCCPhysicalGPUs, status);
    section["NvAPI_EnumTCCPhysicalGPUs"] = status;
    for (size_t index = 0; index < displaying.size(); ++index) {
        RecordForInventory(nvapi, displaying[index], section["gpus"][index]);
    }
    for (Gpu gpu : computing) {
        if (std::find(displaying.begin(), displaying.end(), gpu) == displaying.end()) {
            std::string deviceId;
            Json& answers = section["gpus"].emplace_back(RecordGpu(nvapi, gpu, deviceId));
            answers["tcc"] = true;
            RecordForInventory(nvapi, gpu, answers);
        }
    }
}

/// What an enumeration asks comes first. The first call that only an inventory makes is blamed for what hangs after that.
void RecordSession(const Nvapi& nvapi, NvapiRecording& recording, WatchedThread<NvapiRecording>& thread)
{
    const auto gpus = RecordForEnumeration(nvapi, recording);
    thread.Publish(recording, "nvapi NvAPI_EnumTCCPhysicalGPUs");
    RecordForInventory(nvapi, gpus, *recording.Section);
}

void Read(WatchedThread<NvapiRecording>& thread)
{
    NvapiRecording recording;
    ModuleHandle module(::LoadLibraryW(L"nvapi64.dll"));
    if (!module) {
        return thread.Publish(recording, "");
    }
    const Nvapi nvapi(module.get());
    Json& section = recording.Section.emplace();
    section["unresolved"] = nvapi.Unresolved();
    const NvAPI_Status status = nvapi.Call(NvapiId::NvAPI_Initialize);
    section["NvAPI_Initialize"] = status;
    if (status == NVAPI_OK) {
        RecordSession(nvapi, recording, thread);
        section["NvAPI_Unload"] = nvapi.Call(NvapiId::NvAPI_Unload);
        if (section["NvAPI_Unload"] != NVAPI_OK) {
            (void)module.release(); // a driver that is not shut down may still run, so its code must stay loaded
        }
    }
    thread.Publish(recording, "");
}

} // namespace

Recorded<NvapiRecording> RecordNvapi(uint32_t patienceMilliseconds)
{
    return RecordOnThread("nvapi NvAPI_Initialize", NvapiRecording{Json::object(), {}}, patienceMilliseconds, &Read);
}

} // namespace orvel::recorder
