#include "Interfaces.h"

#include <algorithm>
#include <array>

#include "vendors/nvidia/NvapiInterface.h"
#include "vendors/nvidia/NvidiaFormulas.h"

namespace orvel::recorder {

using namespace orvel::shared::enumeration;

namespace {

struct Function {
    const char* Name; ///< in a machine file
    NvapiId Id;
};

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
};

constexpr uint32_t clockTypes[] = {0, 4}; // which an enumeration asks for

using Gpu = NvPhysicalGpuHandle;

/// The functions that the driver does not have.
Json Unresolved(HMODULE module)
{
    using QueryInterface = void* (*)(uint32_t id);
    const auto queryInterface = FindFunction<QueryInterface>(module, "nvapi_QueryInterface");
    if (!queryInterface) {
        return Json::array({"nvapi_QueryInterface"});
    }
    Json unresolved = Json::array();
    for (const Function& function : functions) {
        if (!queryInterface(static_cast<uint32_t>(function.Id))) {
            unresolved.push_back(function.Name);
        }
    }
    return unresolved;
}

template <typename Number>
Json RecordNumber(const NvapiInterface& nvapi, Gpu gpu, NvAPI_Status (NvapiInterface::*read)(Gpu, Number*) const)
{
    Number number = 0;
    const NvAPI_Status status = (nvapi.*read)(gpu, &number);
    return Answer(status, number);
}

Json RecordText(const NvapiInterface& nvapi, Gpu gpu, NvAPI_Status (NvapiInterface::*read)(Gpu, char*) const)
{
    return RecordTextOf<NVAPI_SHORT_STRING_MAX>([&](char* text) { return (nvapi.*read)(gpu, text); });
}

Json RecordIdentifiers(const NvapiInterface& nvapi, Gpu gpu, std::string& deviceId)
{
    uint32_t device = 0;
    uint32_t subsystem = 0;
    uint32_t revision = 0;
    uint32_t extended = 0;
    const NvAPI_Status status = nvapi.NvAPI_GPU_GetPCIIdentifiers(gpu, &device, &subsystem, &revision, &extended);
    deviceId = status == NVAPI_OK ? NvidiaDeviceId(device) : "";
    return Answer(status, {{"device", device}, {"subsystem", subsystem}, {"revision", revision}, {"extended", extended}});
}

/// An enumeration makes two calls with one structure, and reads another member after each.
Json RecordMemory(const NvapiInterface& nvapi, Gpu gpu)
{
    NvapiMemoryInfo info{};
    const NvAPI_Status status = nvapi.NvAPI_GPU_GetMemoryInfoEx(gpu, &info);
    const uint64_t shared = info.SharedSystemMemory;
    nvapi.NvAPI_GPU_GetMemoryInfoEx(gpu, &info);
    return Answer(status, {{"offset32", shared}, {"offset40", info.CurrentAvailableDedicatedVideoMemory}});
}

Json ClockOf(const NvapiClockDomain& domain)
{
    return {{"present", (domain.IsPresent & 1) != 0}, {"kHz", domain.Kilohertz}};
}

Json RecordClocks(const NvapiInterface& nvapi, Gpu gpu)
{
    Json answers = Json::object();
    for (const uint32_t type : clockTypes) {
        NvapiClockFrequencies clocks{};
        clocks.Version = NvapiVersion<NvapiClockFrequencies>(3);
        clocks.ClockType = type;
        const NvAPI_Status status = nvapi.NvAPI_GPU_GetAllClockFrequencies(gpu, &clocks);
        answers[std::to_string(type)] =
            Answer(status, {{"domain0", ClockOf(clocks.Domains[NVAPI_GPU_PUBLIC_CLOCK_GRAPHICS])},
                            {"domain4", ClockOf(clocks.Domains[NVAPI_GPU_PUBLIC_CLOCK_MEMORY])}});
    }
    return answers;
}

Json RecordEccStatus(const NvapiInterface& nvapi, Gpu gpu)
{
    NvapiEccStatusInfo info{};
    info.Version = NvapiVersion<NvapiEccStatusInfo>(1);
    const NvAPI_Status status = nvapi.NvAPI_GPU_GetECCStatusInfo(gpu, &info);
    return Answer(status, {{"supported", info.Supported}, {"enabled", info.Enabled}});
}

Json RecordEccErrors(const NvapiInterface& nvapi, Gpu gpu)
{
    NvapiEccErrorInfo info{};
    info.Version = NvapiVersion<NvapiEccErrorInfo>(1);
    const NvAPI_Status status = nvapi.NvAPI_GPU_GetECCErrorInfo(gpu, &info);
    return Answer(status, {{"single", info.CurrentSingleBitErrors}, {"double", info.CurrentDoubleBitErrors}});
}

Json RecordMultiGpu(const NvapiInterface& nvapi)
{
    NvapiMultiGpuCaps caps{};
    caps.Version = NvapiVersion<NvapiMultiGpuCaps>(2);
    const NvAPI_Status status = nvapi.NvAPI_D3D11_MultiGPU_GetCaps(&caps);
    return Answer(status, Json::array({caps.TotalGpus, caps.SliGpus}));
}

Json RecordGpu(const NvapiInterface& nvapi, Gpu gpu, std::string& deviceId)
{
    using Nvapi = NvapiInterface;
    return {
        {"NvAPI_GPU_GetFullName", RecordText(nvapi, gpu, &Nvapi::NvAPI_GPU_GetFullName)},
        {"NvAPI_GPU_GetPCIIdentifiers", RecordIdentifiers(nvapi, gpu, deviceId)},
        {"NvAPI_GPU_GetBusId", RecordNumber(nvapi, gpu, &Nvapi::NvAPI_GPU_GetBusId)},
        {"NvAPI_GPU_GetBusType", RecordNumber(nvapi, gpu, &Nvapi::NvAPI_GPU_GetBusType)},
        {"NvAPI_GPU_GetGPUType", RecordNumber(nvapi, gpu, &Nvapi::NvAPI_GPU_GetGPUType)},
        {"NvAPI_GPU_GetVbiosVersionString", RecordText(nvapi, gpu, &Nvapi::NvAPI_GPU_GetVbiosVersionString)},
        {"NvAPI_GPU_GetGpuCoreCount", RecordNumber(nvapi, gpu, &Nvapi::NvAPI_GPU_GetGpuCoreCount)},
        {"NvAPI_GPU_GetRamBusWidth", RecordNumber(nvapi, gpu, &Nvapi::NvAPI_GPU_GetRamBusWidth)},
        {"NvAPI_GPU_GetCurrentPCIEDownstreamWidth",
         RecordNumber(nvapi, gpu, &Nvapi::NvAPI_GPU_GetCurrentPCIEDownstreamWidth)},
        {"NvAPI_GPU_GetMemoryInfoEx", RecordMemory(nvapi, gpu)},
        {"NvAPI_GPU_GetAllClockFrequencies", RecordClocks(nvapi, gpu)},
        {"NvAPI_GPU_GetECCStatusInfo", RecordEccStatus(nvapi, gpu)},
        {"NvAPI_GPU_GetECCErrorInfo", RecordEccErrors(nvapi, gpu)},
    };
}

void RecordGpus(const NvapiInterface& nvapi, NvapiRecording& recording)
{
    Json& section = *recording.Section;
    std::array<Gpu, NVAPI_MAX_PHYSICAL_GPUS> handles{};
    uint32_t count = 0;
    const NvAPI_Status status = nvapi.NvAPI_EnumPhysicalGPUs(handles.data(), &count);
    section["NvAPI_EnumPhysicalGPUs"] = status;
    section["0xD2D25687"] = RecordMultiGpu(nvapi);
    section["gpus"] = Json::array();
    const size_t gpus = status == NVAPI_OK ? std::min<size_t>(count, handles.size()) : 0;
    for (size_t index = 0; index < gpus; ++index) {
        std::string deviceId;
        section["gpus"].push_back(RecordGpu(nvapi, handles[index], deviceId));
        recording.DeviceId = recording.DeviceId.value_or(deviceId);
    }
}

} // namespace

NvapiRecording RecordNvapi()
{
    NvapiRecording recording;
    const ModuleHandle module(::LoadLibraryW(L"nvapi64.dll"));
    if (!module) {
        return recording;
    }
    Json& section = recording.Section.emplace();
    section["unresolved"] = Unresolved(module.get());
    NvapiInterface nvapi;
    const NvAPI_Status status = nvapi.NvAPI_Initialize();
    section["NvAPI_Initialize"] = status;
    if (status == NVAPI_OK) {
        RecordGpus(nvapi, recording);
        section["NvAPI_Unload"] = nvapi.NvAPI_Unload();
    }
    return recording;
}

} // namespace orvel::recorder
