#include "vendors/nvidia/Nvidia.h"

#include "formulas/StatusNames.h"
#include "formulas/VideoControllerQuery.h"
#include "platform/Log.h"
#include "platform/OpenCLWrapper.h"
#include "platform/TextEncoding.h"
#include "system/SystemMemory.h"
#include "system/WmiNamespace.h"

namespace orvel::shared::enumeration {

void Nvidia::QueryInfo(GraphicCardList& list)
{
    wmi::WMIClient client(wmiNamespace);
    const NvapiClient nvapi;
    const NvmlClient nvml;
    const OpenCLWrapper opencl; // Intended: not used, but a machine without it has no NVIDIA record.
    if (nvapi.GetGpuCount() == 0) {
        return;
    }
    // Intended: the first GPU only, matched by its index in NVAPI and NVML and by its device id in WMI.
    const Gpu gpu{nvapi, nvml, nvapi.GetGpuHandle(0), nvml.GetGpuHandle(0)};
    const std::string deviceId = nvapi.GetDeviceId(gpu.Handle);
    if (client.Query(ToUtf16(NvidiaAdapterQuery(deviceId)).c_str()) != 0) {
        PLOGE << "Failed to get Win32_VideoController fields from WMI";
        return;
    }
    client.GetNext(); // without a row the readers return their defaults
    list.Append(MakeRecord(ReadGpu(gpu, client, deviceId)));
}

// The sources are queried in a fixed order, which is also the order of the log lines.
GraphicCardProperties Nvidia::ReadGpu(const Gpu& gpu, wmi::WMIClient& client, const std::string& deviceId) const
{
    GraphicCardProperties card;
    card.Manufacturer = "Nvidia";
    card.DeviceId = deviceId;
    card.AvailabilityCode = GetAvailabilityCode(client);
    card.ConfigError = GetConfigError(client);
    card.CardName = gpu.Nvapi.GetCardName(gpu.Handle);
    card.BusId = gpu.Nvapi.GetBusId(gpu.Handle);
    card.AdapterStatus = GetAdapterStatus(client);
    card.AdapterRam = GetAdapterRam(client);
    card.AdapterName = GetAdapterName(client);
    ReadEccAndCores(gpu, client, card);
    ReadMemoryAndClocks(gpu, card);
    ReadLimitsAndLink(gpu, card);
    ReadDriverAndDisplay(client, card);
    return card;
}

void Nvidia::ReadEccAndCores(const Gpu& gpu, wmi::WMIClient& client, GraphicCardProperties& card) const
{
    card.EccDoubleBitErrors = gpu.Nvapi.GetEccDoubleBitErrors(gpu.Handle);
    card.EccSingleBitErrors = gpu.Nvapi.GetEccSingleBitErrors(gpu.Handle);
    card.EccStatus = gpu.Nvapi.GetEccStatus(gpu.Handle);
    card.NvidiaSli = gpu.Nvapi.GetNvidiaSli();
    card.BiosVersion = gpu.Nvapi.GetBiosVersion(gpu.Handle);
    card.DriverReleaseDate = GetDriverReleaseDate(client);
    card.Shaders = gpu.Nvapi.GetShaders(gpu.Handle);
    card.Cores = gpu.Nvapi.GetCores(gpu.Handle);
}

void Nvidia::ReadMemoryAndClocks(const Gpu& gpu, GraphicCardProperties& card) const
{
    card.MemoryBusWidth = gpu.Nvapi.GetMemoryBusWidth(gpu.Handle);
    card.MemoryBandwidth = gpu.Nvml.GetMemoryBandwidth(gpu.Device);
    card.MemoryType = MemoryTypeName(GetMemoryType()); // Intended: the type of the machine's memory.
    NvapiMemoryInfo memory{};
    card.MemorySharedSize = gpu.Nvapi.GetMemorySharedSize(gpu.Handle, memory);
    card.MemorySize = gpu.Nvapi.GetMemorySize(gpu.Handle, memory);
    card.MemoryBoostClock = gpu.Nvapi.GetMemoryBoostClock(gpu.Handle);
    card.MemoryClockMax = gpu.Nvapi.GetMemoryClockMax(gpu.Handle);
    card.GpuBoostClock = gpu.Nvapi.GetGpuBoostClock(gpu.Handle);
    card.GpuClockMax = gpu.Nvapi.GetGpuClockMax(gpu.Handle);
    card.MultiGpuSupport = gpu.Nvapi.GetMultiGpuSupport();
    card.GpuType = gpu.Nvapi.GetGpuType(gpu.Handle);
}

void Nvidia::ReadLimitsAndLink(const Gpu& gpu, GraphicCardProperties& card) const
{
    card.TemperatureShutdown = gpu.Nvml.GetTemperatureShutdown(gpu.Device);
    card.TemperateSlowdown = gpu.Nvml.GetTemperatureSlowdown(gpu.Device);
    card.MaxTemperature = gpu.Nvml.GetMaxTemperature(gpu.Device);
    card.CudaCapability = gpu.Nvml.GetCudaCapability(gpu.Device);
    card.PciLanes = gpu.Nvapi.GetPciLanes(gpu.Handle);
    card.PciTransferRate = gpu.Nvml.GetPcieTransferRate(gpu.Device);
    card.PcieGeneration = gpu.Nvml.GetPcieGeneration(gpu.Device);
    card.BusInterface = gpu.Nvapi.GetBusInterface(gpu.Handle);
    card.ChipName = gpu.Nvapi.GetChipName(gpu.Handle);
    card.SubsystemId = gpu.Nvapi.GetSubsystemId(gpu.Handle);
    card.GraphicsCardSn = gpu.Nvml.GetGraphicCardSerialNumber(gpu.Device);
}

} // namespace orvel::shared::enumeration
