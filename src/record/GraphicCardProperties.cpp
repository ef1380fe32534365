#include "record/GraphicCardProperties.h"

namespace orvel::shared::enumeration {

std::unique_ptr<GraphicCardInfo> MakeRecord(const GraphicCardProperties& properties)
{
    const GraphicCardProperties& p = properties;
    // Made from properties/properties.toml by ./dev generate.
    // clang-format off
    return std::make_unique<GraphicCardInfo>(
        p.AvailabilityCode, p.AvailabilityStatus.c_str(), p.ConfigError, p.ConfigErrorStatus.c_str(), p.UserConfig,
        p.CurrentResolution.c_str(), p.CurrentRefreshRate, p.DriverVersion.c_str(), p.IsAeroEnabled,
        p.GraphicsCardSn.c_str(), p.BusId, p.DeviceId.c_str(), p.SubsystemId.c_str(), p.CardName.c_str(), p.ChipName.c_str(),
        p.Manufacturer.c_str(), p.BusInterface.c_str(), p.PcieGeneration, p.PciTransferRate, p.PciLanes, p.PixelFillRate,
        p.TextureFillRate, p.CudaCapability, p.MaxTemperature, p.TemperateSlowdown, p.TemperatureShutdown, p.GpuType.c_str(),
        p.MultiGpuSupport, p.GpuClockMax, p.GpuBoostClock, p.MemoryClockMax, p.MemoryBoostClock, p.MemorySize,
        p.MemorySharedSize, p.MemoryType.c_str(), p.MemoryBandwidth, p.MemoryBusWidth, p.Cores, p.Shaders,
        p.DriverReleaseDate.c_str(), p.BiosVersion.c_str(), p.NvidiaSli, p.AmdCrossfire, p.EccStatus, p.EccSingleBitErrors,
        p.EccDoubleBitErrors, p.AdapterName.c_str(), p.AdapterRam, p.AdapterStatus.c_str());
    // clang-format on
}

} // namespace orvel::shared::enumeration
