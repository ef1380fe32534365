#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "GraphicCardInfo.h"

namespace orvel::shared::enumeration {

/// The properties of a record while its enumerator reads them; each starts at its neutral value. GraphicCardInfo describes
/// them.
struct GraphicCardProperties {
    // Made from properties/properties.toml by ./dev generate.
    // clang-format off
    uint32_t AvailabilityCode = 0;
    std::string AvailabilityStatus;
    uint32_t ConfigError = 0;
    std::string ConfigErrorStatus;
    bool UserConfig = false;
    std::string CurrentResolution;
    uint32_t CurrentRefreshRate = 0;
    std::string DriverVersion;
    bool IsAeroEnabled = false;
    std::string GraphicsCardSn;
    uint32_t BusId = 0;
    std::string DeviceId;
    std::string SubsystemId;
    std::string CardName;
    std::string ChipName;
    std::string Manufacturer;
    std::string BusInterface;
    float PcieGeneration = 0.0F;
    float PciTransferRate = 0.0F;
    uint32_t PciLanes = 0;
    float PixelFillRate = 0.0F;
    float TextureFillRate = 0.0F;
    float CudaCapability = 0.0F;
    uint32_t MaxTemperature = 0;
    uint32_t TemperateSlowdown = 0;
    uint32_t TemperatureShutdown = 0;
    std::string GpuType;
    bool MultiGpuSupport = false;
    float GpuClockMax = 0.0F;
    float GpuBoostClock = 0.0F;
    float MemoryClockMax = 0.0F;
    float MemoryBoostClock = 0.0F;
    uint32_t MemorySize = 0;
    uint32_t MemorySharedSize = 0;
    std::string MemoryType;
    float MemoryBandwidth = 0.0F;
    uint32_t MemoryBusWidth = 0;
    uint32_t Cores = 0;
    uint32_t Shaders = 0;
    std::string DriverReleaseDate;
    std::string BiosVersion;
    bool NvidiaSli = false;
    bool AmdCrossfire = false;
    uint32_t EccStatus = 0;
    uint32_t EccSingleBitErrors = 0;
    uint32_t EccDoubleBitErrors = 0;
    std::string AdapterName;
    uint32_t AdapterRam = 0;
    std::string AdapterStatus;
    // clang-format on
};

/// The finished record.
std::unique_ptr<GraphicCardInfo> MakeRecord(const GraphicCardProperties& properties);

} // namespace orvel::shared::enumeration
