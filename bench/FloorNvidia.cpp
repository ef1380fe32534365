#include "Floor.h"

#include <cstdio>
#include <cwchar>

#include "FloorOpenCl.h"
#include "FloorSystem.h"
#include "FloorWmi.h"
#include "interfaces/NvapiTypes.h"
#include "vendors/nvidia/Nvml.h"

namespace orvel::bench {

namespace {

using namespace shared::enumeration;

// The functions that the product imports from NVML.
struct Nvml {
    decltype(&nvmlInit_v2) Init;
    decltype(&nvmlShutdown) Shutdown;
    decltype(&nvmlDeviceGetCount_v2) Count;
    decltype(&nvmlDeviceGetHandleByIndex_v2) HandleByIndex;
    decltype(&nvmlDeviceGetSerial) Serial;
    decltype(&nvmlDeviceGetCudaComputeCapability) CudaComputeCapability;
    decltype(&nvmlDeviceGetTemperatureThreshold) TemperatureThreshold;
    decltype(&nvmlDeviceGetCurrPcieLinkGeneration) CurrentGeneration;
    decltype(&nvmlDeviceGetMaxPcieLinkGeneration) MaxGeneration;
    decltype(&nvmlDeviceGetMaxPcieLinkWidth) MaxWidth;
    decltype(&nvmlDeviceGetClockInfo) ClockInfo;
    decltype(&nvmlDeviceGetMemoryBusWidth) MemoryBusWidth;
};

Nvml nvml{};

template <typename Function>
void FindIn(HMODULE module, const char* name, Function& function)
{
    function = FindFunction<Function>(module, name);
}

/// NVAPI; every call looks up its function, as in the product.
struct Nvapi {
    ModuleHandle Module{::LoadLibraryW(L"nvapi64.dll")};
    void* (*QueryInterface)(uint32_t id) = Module ? FindFunction<void* (*)(uint32_t)>(Module.get(), "nvapi_QueryInterface")
                                                  : nullptr;

    template <typename... Arguments>
    void Call(uint32_t id, Arguments... arguments) const
    {
        reinterpret_cast<NvAPI_Status (*)(Arguments...)>(QueryInterface(id))(arguments...);
    }
};

/// A GPU's handles in both interfaces, and a buffer for results.
struct Gpu {
    const Nvapi& Api;
    NvPhysicalGpuHandle Handle;
    nvmlDevice_t Device;
    char Text[NVAPI_SHORT_STRING_MAX] = "";
    uint32_t Number = 0;

    void Read(uint32_t id) { Api.Call(id, Handle, &Number); }
    void ReadText(uint32_t id) { Api.Call(id, Handle, static_cast<char*>(Text)); }
};

uint32_t ReadIdentifiers(const Gpu& gpu)
{
    uint32_t device = 0;
    uint32_t subsystem = 0;
    uint32_t revision = 0;
    uint32_t extended = 0;
    gpu.Api.Call(0x2DDFB66E, gpu.Handle, &device, &subsystem, &revision, &extended);
    return device;
}

void ReadEccErrors(const Gpu& gpu)
{
    NvapiEccErrorInfo errors{};
    errors.Version = NvapiVersion<NvapiEccErrorInfo>(1);
    gpu.Api.Call(0xC71F85A6, gpu.Handle, &errors);
}

void ReadMultiGpu(const Gpu& gpu)
{
    NvapiMultiGpuCaps caps{};
    caps.Version = NvapiVersion<NvapiMultiGpuCaps>(2);
    gpu.Api.Call(0xD2D25687, &caps);
}

void ReadEccAndCores(Gpu& gpu, const FloorRows& row)
{
    ReadEccErrors(gpu);
    ReadEccErrors(gpu);
    NvapiEccStatusInfo status{};
    status.Version = NvapiVersion<NvapiEccStatusInfo>(1);
    gpu.Api.Call(0xCA1DDAF3, gpu.Handle, &status);
    ReadMultiGpu(gpu);
    gpu.ReadText(0xA561FD7D); // the BIOS version
    row.Read(L"DriverDate");
    gpu.Read(0xC7026A87); // cores
    gpu.Read(0xC7026A87);
}

void ReadClocks(const Gpu& gpu, uint32_t type)
{
    NvapiClockFrequencies clocks{};
    clocks.Version = NvapiVersion<NvapiClockFrequencies>(3);
    clocks.ClockType = type;
    gpu.Api.Call(0xDCB616C3, gpu.Handle, &clocks);
}

void ReadMemoryAndClocks(Gpu& gpu, FloorWmi& wmi)
{
    gpu.Read(0x7975C581); // the memory bus
    nvml.ClockInfo(gpu.Device, NVML_CLOCK_MEM, &gpu.Number);
    nvml.MemoryBusWidth(gpu.Device, &gpu.Number);
    ReadMemoryType(wmi);
    NvapiMemoryInfo memory{};
    gpu.Api.Call(0xC0599498, gpu.Handle, &memory);
    gpu.Api.Call(0xC0599498, gpu.Handle, &memory);
    for (const uint32_t type : {4U, 4U, 0U, 0U}) {
        ReadClocks(gpu, type);
    }
    ReadMultiGpu(gpu);
    gpu.Read(0xC33BAEB1); // the type of GPU
}

void ReadLimitsAndLink(Gpu& gpu)
{
    for (const int threshold :
         {NVML_TEMPERATURE_THRESHOLD_SHUTDOWN, NVML_TEMPERATURE_THRESHOLD_SLOWDOWN, NVML_TEMPERATURE_THRESHOLD_GPU_MAX}) {
        nvml.TemperatureThreshold(gpu.Device, threshold, &gpu.Number);
    }
    int major = 0;
    int minor = 0;
    nvml.CudaComputeCapability(gpu.Device, &major, &minor);
    gpu.Read(0xD048C3B1); // lanes
    nvml.MaxGeneration(gpu.Device, &gpu.Number);
    nvml.MaxWidth(gpu.Device, &gpu.Number);
    nvml.CurrentGeneration(gpu.Device, &gpu.Number);
    gpu.Read(0x1BB18724);     // the bus
    gpu.ReadText(0xCEEE8E9F); // the name
    ReadIdentifiers(gpu);
    nvml.Serial(gpu.Device, gpu.Text, NVML_DEVICE_SERIAL_BUFFER_SIZE);
}

void ReadGpu(Gpu& gpu, FloorWmi& wmi)
{
    wchar_t wql[128];
    std::swprintf(wql, std::size(wql),
                  L"SELECT * FROM Win32_VideoController WHERE PNPDeviceID LIKE 'PCI%%VEN_10DE&DEV_%04x%%'",
                  ReadIdentifiers(gpu) >> 16);
    FloorRows row(wmi, wql);
    row.Next();
    row.Read(L"Availability");
    row.Read(L"ConfigManagerErrorCode");
    gpu.ReadText(0xCEEE8E9F); // the name
    gpu.Read(0x1BE0B8E5);     // the bus number
    row.Read(L"Status");
    row.Read(L"AdapterRAM");
    row.Read(L"Name");
    ReadEccAndCores(gpu, row);
    ReadMemoryAndClocks(gpu, wmi);
    ReadLimitsAndLink(gpu);
    ReadComposition();
    for (const wchar_t* property : {L"DriverVersion", L"CurrentRefreshRate", L"CurrentHorizontalResolution",
                                    L"CurrentVerticalResolution", L"ConfigManagerUserConfig"}) {
        row.Read(property);
    }
}

nvmlDevice_t StartNvml()
{
    nvml.Init();
    unsigned int count = 0;
    nvml.Count(&count);
    nvmlDevice_t devices[NVAPI_MAX_PHYSICAL_GPUS]{};
    for (unsigned int index = 0; index < count && index < std::size(devices); ++index) {
        nvml.HandleByIndex(index, &devices[index]);
    }
    return devices[0];
}

} // namespace

void PrepareNvidiaFloor()
{
    const HMODULE module = ::LoadLibraryW(L"nvml.dll");
    FindIn(module, "nvmlInit_v2", nvml.Init);
    FindIn(module, "nvmlShutdown", nvml.Shutdown);
    FindIn(module, "nvmlDeviceGetCount_v2", nvml.Count);
    FindIn(module, "nvmlDeviceGetHandleByIndex_v2", nvml.HandleByIndex);
    FindIn(module, "nvmlDeviceGetSerial", nvml.Serial);
    FindIn(module, "nvmlDeviceGetCudaComputeCapability", nvml.CudaComputeCapability);
    FindIn(module, "nvmlDeviceGetTemperatureThreshold", nvml.TemperatureThreshold);
    FindIn(module, "nvmlDeviceGetCurrPcieLinkGeneration", nvml.CurrentGeneration);
    FindIn(module, "nvmlDeviceGetMaxPcieLinkGeneration", nvml.MaxGeneration);
    FindIn(module, "nvmlDeviceGetMaxPcieLinkWidth", nvml.MaxWidth);
    FindIn(module, "nvmlDeviceGetClockInfo", nvml.ClockInfo);
    FindIn(module, "nvmlDeviceGetMemoryBusWidth", nvml.MemoryBusWidth);
}

void RunNvidiaFloor(FloorWmi& wmi)
{
    const Nvapi api;
    if (!api.QueryInterface) {
        return;
    }
    api.Call(0x0150E828);
    NvPhysicalGpuHandle gpus[NVAPI_MAX_PHYSICAL_GPUS]{};
    uint32_t count = 0;
    api.Call(0xE5AC921F, static_cast<NvPhysicalGpuHandle*>(gpus), &count);
    {
        const nvmlDevice_t device = StartNvml();
        const auto opencl = LoadOpenCl();
        Gpu gpu{api, gpus[0], device};
        ReadGpu(gpu, wmi);
    }
    nvml.Shutdown();
    api.Call(0xD22BDD7E);
}

} // namespace orvel::bench
