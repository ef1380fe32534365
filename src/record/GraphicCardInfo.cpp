#include "GraphicCardInfo.h"

#include <cstring>

#include "platform/LastStore.h"

namespace orvel::shared::enumeration {

namespace {

/// A copy of `text` that the record owns, in an array of exactly its length.
const char* CopyText(const char* text)
{
    const std::size_t bytes = std::strlen(text) + 1;
    return static_cast<const char*>(std::memcpy(new char[bytes], text, bytes));
}

void ReleaseText(const char*& text)
{
    delete[] TakeForGood(text);
}

} // namespace

// Intended: the texts are shared, not copied, and those of the target are leaked.
GraphicCardInfo& GraphicCardInfo::operator=(const GraphicCardInfo& other) = default;

// Made from properties/properties.toml by ./dev generate.
// clang-format off
GraphicCardInfo::GraphicCardInfo(
    unsigned int availabilityCode, const char* availabilityStatus, unsigned int configError, const char* configErrorStatus,
    bool userConfig, const char* currentResolution, unsigned int currentRefreshRate, const char* driverVersion,
    bool isAeroEnabled, const char* graphicsCardSn, unsigned int busId, const char* deviceId, const char* subsystemId,
    const char* cardName, const char* chipName, const char* manufacturer, const char* busInterface, float pcieGeneration,
    float pciTransferRate, unsigned int pciLanes, float pixelFillRate, float textureFillRate, float cudaCapability,
    unsigned int maxTemperature, unsigned int temperateSlowdown, unsigned int temperatureShutdown, const char* gpuType,
    bool multiGpuSupport, float gpuClockMax, float gpuBoostClock, float memoryClockMax, float memoryBoostClock,
    unsigned int memorySize, unsigned int memorySharedSize, const char* memoryType, float memoryBandwidth,
    unsigned int memoryBusWidth, unsigned int cores, unsigned int shaders, const char* driverReleaseDate,
    const char* biosVersion, bool nvidiaSli, bool amdCrossfire, unsigned int eccStatus, unsigned int eccSingleBitErrors,
    unsigned int eccDoubleBitErrors, const char* adapterName, unsigned int adapterRam, const char* adapterStatus)
    : AvailabilityCode(availabilityCode),
      ConfigError(configError),
      UserConfig(userConfig),
      CurrentRefreshRate(currentRefreshRate),
      IsAeroEnabled(isAeroEnabled),
      BusId(busId),
      PcieGeneration(pcieGeneration),
      PciTransferRate(pciTransferRate),
      PciLanes(pciLanes),
      PixelFillRate(pixelFillRate),
      TextureFillRate(textureFillRate),
      CudaCapability(cudaCapability),
      MaxTemperature(maxTemperature),
      TemperateSlowdown(temperateSlowdown),
      TemperatureShutdown(temperatureShutdown),
      MultiGpuSupport(multiGpuSupport),
      GpuClockMax(gpuClockMax),
      GpuBoostClock(gpuBoostClock),
      MemoryClockMax(memoryClockMax),
      MemoryBoostClock(memoryBoostClock),
      MemorySize(memorySize),
      MemorySharedSize(memorySharedSize),
      MemoryBandwidth(memoryBandwidth),
      MemoryBusWidth(memoryBusWidth),
      Cores(cores),
      Shaders(shaders),
      NvidiaSli(nvidiaSli),
      AmdCrossfire(amdCrossfire),
      EccStatus(eccStatus),
      EccSingleBitErrors(eccSingleBitErrors),
      EccDoubleBitErrors(eccDoubleBitErrors),
      AdapterRam(adapterRam)
{
    ConfigErrorStatus = CopyText(configErrorStatus);
    AvailabilityStatus = CopyText(availabilityStatus);
    CurrentResolution = CopyText(currentResolution);
    DriverVersion = CopyText(driverVersion);
    GraphicsCardSn = CopyText(graphicsCardSn);
    DeviceId = CopyText(deviceId);
    SubsystemId = CopyText(subsystemId);
    CardName = CopyText(cardName);
    ChipName = CopyText(chipName);
    Manufacturer = CopyText(manufacturer);
    BusInterface = CopyText(busInterface);
    GpuType = CopyText(gpuType);
    MemoryType = CopyText(memoryType);
    DriverReleaseDate = CopyText(driverReleaseDate);
    BiosVersion = CopyText(biosVersion);
    AdapterName = CopyText(adapterName);
    AdapterStatus = CopyText(adapterStatus);
}

GraphicCardInfo::~GraphicCardInfo()
{
    ReleaseText(ConfigErrorStatus);
    ReleaseText(AvailabilityStatus);
    ReleaseText(CurrentResolution);
    ReleaseText(DriverVersion);
    ReleaseText(GraphicsCardSn);
    ReleaseText(DeviceId);
    ReleaseText(SubsystemId);
    ReleaseText(CardName);
    ReleaseText(ChipName);
    ReleaseText(Manufacturer);
    ReleaseText(BusInterface);
    ReleaseText(GpuType);
    ReleaseText(MemoryType);
    ReleaseText(DriverReleaseDate);
    ReleaseText(BiosVersion);
    ReleaseText(AdapterName);
    ReleaseText(AdapterStatus);
}

unsigned int GraphicCardInfo::GetAvailabilityCode() const
{
    return AvailabilityCode;
}

const char* GraphicCardInfo::GetAvailabilityStatus() const
{
    return AvailabilityStatus;
}

unsigned int GraphicCardInfo::GetConfigError() const
{
    return ConfigError;
}

const char* GraphicCardInfo::GetConfigErrorStatus() const
{
    return ConfigErrorStatus;
}

bool GraphicCardInfo::GetUserConfig() const
{
    return UserConfig;
}

const char* GraphicCardInfo::GetCurrentResolution() const
{
    return CurrentResolution;
}

unsigned int GraphicCardInfo::GetCurrentRefreshRate() const
{
    return CurrentRefreshRate;
}

const char* GraphicCardInfo::GetDriverVersion() const
{
    return DriverVersion;
}

bool GraphicCardInfo::GetIsAeroEnabled() const
{
    return IsAeroEnabled;
}

const char* GraphicCardInfo::GetGraphicsCardSn() const
{
    return GraphicsCardSn;
}

unsigned int GraphicCardInfo::GetBusId() const
{
    return BusId;
}

const char* GraphicCardInfo::GetDeviceId() const
{
    return DeviceId;
}

const char* GraphicCardInfo::GetSubsystemId() const
{
    return SubsystemId;
}

const char* GraphicCardInfo::GetCardName() const
{
    return CardName;
}

const char* GraphicCardInfo::GetChipName() const
{
    return ChipName;
}

const char* GraphicCardInfo::GetManufacturer() const
{
    return Manufacturer;
}

const char* GraphicCardInfo::GetBusInterface() const
{
    return BusInterface;
}

float GraphicCardInfo::GetPcieGeneration() const
{
    return PcieGeneration;
}

float GraphicCardInfo::GetPciTransferRate() const
{
    return PciTransferRate;
}

unsigned int GraphicCardInfo::GetPciLanes() const
{
    return PciLanes;
}

float GraphicCardInfo::GetPixelFillRate() const
{
    return PixelFillRate;
}

float GraphicCardInfo::GetTextureFillRate() const
{
    return TextureFillRate;
}

float GraphicCardInfo::GetCudaCapability() const
{
    return CudaCapability;
}

unsigned int GraphicCardInfo::GetMaxTemperature() const
{
    return MaxTemperature;
}

unsigned int GraphicCardInfo::GetTemperateSlowdown() const
{
    return TemperateSlowdown;
}

unsigned int GraphicCardInfo::GetTemperatureShutdown() const
{
    return TemperatureShutdown;
}

const char* GraphicCardInfo::GetGpuType() const
{
    return GpuType;
}

bool GraphicCardInfo::GetMultiGpuSupport() const
{
    return MultiGpuSupport;
}

float GraphicCardInfo::GetGpuClockMax() const
{
    return GpuClockMax;
}

float GraphicCardInfo::GetGpuBoostClock() const
{
    return GpuBoostClock;
}

float GraphicCardInfo::GetMemoryClockMax() const
{
    return MemoryClockMax;
}

float GraphicCardInfo::GetMemoryBoostClock() const
{
    return MemoryBoostClock;
}

unsigned int GraphicCardInfo::GetMemorySize() const
{
    return MemorySize;
}

unsigned int GraphicCardInfo::GetMemorySharedSize() const
{
    return MemorySharedSize;
}

const char* GraphicCardInfo::GetMemoryType() const
{
    return MemoryType;
}

float GraphicCardInfo::GetMemoryBandwidth() const
{
    return MemoryBandwidth;
}

unsigned int GraphicCardInfo::GetMemoryBusWidth() const
{
    return MemoryBusWidth;
}

unsigned int GraphicCardInfo::GetCores() const
{
    return Cores;
}

unsigned int GraphicCardInfo::GetShaders() const
{
    return Shaders;
}

const char* GraphicCardInfo::GetDriverReleaseDate() const
{
    return DriverReleaseDate;
}

const char* GraphicCardInfo::GetBiosVersion() const
{
    return BiosVersion;
}

bool GraphicCardInfo::GetNvidiaSli() const
{
    return NvidiaSli;
}

bool GraphicCardInfo::GetAmdCrossfire() const
{
    return AmdCrossfire;
}

unsigned int GraphicCardInfo::GetEccStatus() const
{
    return EccStatus;
}

unsigned int GraphicCardInfo::GetEccSingleBitErrors() const
{
    return EccSingleBitErrors;
}

unsigned int GraphicCardInfo::GetEccDoubleBitErrors() const
{
    return EccDoubleBitErrors;
}

const char* GraphicCardInfo::GetAdapterName() const
{
    return AdapterName;
}

unsigned int GraphicCardInfo::GetAdapterRam() const
{
    return AdapterRam;
}

const char* GraphicCardInfo::GetAdapterStatus() const
{
    return AdapterStatus;
}
// clang-format on

} // namespace orvel::shared::enumeration
