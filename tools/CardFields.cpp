#include "CardFields.h"

#include <charconv>

namespace orvel::tools {

using shared::enumeration::GraphicCardInfo;

namespace {

template <auto Getter>
FieldValue Read(const GraphicCardInfo& card)
{
    return (card.*Getter)();
}

} // namespace

const std::array<CardField, propertyCount> cardFields = {{
    // Made from properties/properties.toml by ./dev generate.
    // clang-format off
    {"AvailabilityCode", FieldGroup::DriverAndStatus, "Availability code", true, Read<&GraphicCardInfo::GetAvailabilityCode>},
    {"AvailabilityStatus", FieldGroup::DriverAndStatus, "Availability", false, Read<&GraphicCardInfo::GetAvailabilityStatus>},
    {"ConfigError", FieldGroup::DriverAndStatus, "Configuration error", true, Read<&GraphicCardInfo::GetConfigError>},
    {"ConfigErrorStatus", FieldGroup::DriverAndStatus, "Configuration", false, Read<&GraphicCardInfo::GetConfigErrorStatus>},
    {"UserConfig", FieldGroup::DriverAndStatus, "User configuration", true, Read<&GraphicCardInfo::GetUserConfig>},
    {"CurrentResolution", FieldGroup::Display, "Resolution", false, Read<&GraphicCardInfo::GetCurrentResolution>},
    {"CurrentRefreshRate", FieldGroup::Display, "Refresh rate", false, Read<&GraphicCardInfo::GetCurrentRefreshRate>},
    {"DriverVersion", FieldGroup::DriverAndStatus, "Driver version", false, Read<&GraphicCardInfo::GetDriverVersion>},
    {"IsAeroEnabled", FieldGroup::Display, "Desktop composition", true, Read<&GraphicCardInfo::GetIsAeroEnabled>},
    {"GraphicsCardSn", FieldGroup::Identity, "Serial number", false, Read<&GraphicCardInfo::GetGraphicsCardSn>},
    {"BusId", FieldGroup::Bus, "PCI bus", true, Read<&GraphicCardInfo::GetBusId>},
    {"DeviceId", FieldGroup::Identity, "Device id", false, Read<&GraphicCardInfo::GetDeviceId>},
    {"SubsystemId", FieldGroup::Identity, "Subsystem id", false, Read<&GraphicCardInfo::GetSubsystemId>},
    {"CardName", FieldGroup::Identity, "Card name", false, Read<&GraphicCardInfo::GetCardName>},
    {"ChipName", FieldGroup::Identity, "Chip name", false, Read<&GraphicCardInfo::GetChipName>},
    {"Manufacturer", FieldGroup::Identity, "Manufacturer", false, Read<&GraphicCardInfo::GetManufacturer>},
    {"BusInterface", FieldGroup::Bus, "Bus interface", false, Read<&GraphicCardInfo::GetBusInterface>},
    {"PcieGeneration", FieldGroup::Bus, "PCIe generation", false, Read<&GraphicCardInfo::GetPcieGeneration>},
    {"PciTransferRate", FieldGroup::Bus, "PCIe transfer rate", false, Read<&GraphicCardInfo::GetPciTransferRate>},
    {"PciLanes", FieldGroup::Bus, "PCIe lanes", false, Read<&GraphicCardInfo::GetPciLanes>},
    {"PixelFillRate", FieldGroup::ClocksAndRates, "Pixel fill rate", false, Read<&GraphicCardInfo::GetPixelFillRate>},
    {"TextureFillRate", FieldGroup::ClocksAndRates, "Texture fill rate", false, Read<&GraphicCardInfo::GetTextureFillRate>},
    {"CudaCapability", FieldGroup::Processing, "CUDA capability", false, Read<&GraphicCardInfo::GetCudaCapability>},
    {"MaxTemperature", FieldGroup::ThermalLimits, "Maximum", false, Read<&GraphicCardInfo::GetMaxTemperature>},
    {"TemperateSlowdown", FieldGroup::ThermalLimits, "Slowdown", false, Read<&GraphicCardInfo::GetTemperateSlowdown>},
    {"TemperatureShutdown", FieldGroup::ThermalLimits, "Shutdown", false, Read<&GraphicCardInfo::GetTemperatureShutdown>},
    {"GpuType", FieldGroup::Identity, "GPU type", false, Read<&GraphicCardInfo::GetGpuType>},
    {"MultiGpuSupport", FieldGroup::EccAndMultiGpu, "Multi-GPU", false, Read<&GraphicCardInfo::GetMultiGpuSupport>},
    {"GpuClockMax", FieldGroup::ClocksAndRates, "GPU clock", false, Read<&GraphicCardInfo::GetGpuClockMax>},
    {"GpuBoostClock", FieldGroup::ClocksAndRates, "GPU boost clock", false, Read<&GraphicCardInfo::GetGpuBoostClock>},
    {"MemoryClockMax", FieldGroup::ClocksAndRates, "Memory clock", false, Read<&GraphicCardInfo::GetMemoryClockMax>},
    {"MemoryBoostClock", FieldGroup::ClocksAndRates, "Memory boost clock", false, Read<&GraphicCardInfo::GetMemoryBoostClock>},
    {"MemorySize", FieldGroup::Memory, "Memory size", false, Read<&GraphicCardInfo::GetMemorySize>},
    {"MemorySharedSize", FieldGroup::Memory, "Shared memory", false, Read<&GraphicCardInfo::GetMemorySharedSize>},
    {"MemoryType", FieldGroup::Memory, "Memory type", false, Read<&GraphicCardInfo::GetMemoryType>},
    {"MemoryBandwidth", FieldGroup::Memory, "Memory bandwidth", false, Read<&GraphicCardInfo::GetMemoryBandwidth>},
    {"MemoryBusWidth", FieldGroup::Memory, "Memory bus width", false, Read<&GraphicCardInfo::GetMemoryBusWidth>},
    {"Cores", FieldGroup::Processing, "Cores", false, Read<&GraphicCardInfo::GetCores>},
    {"Shaders", FieldGroup::Processing, "Shaders", false, Read<&GraphicCardInfo::GetShaders>},
    {"DriverReleaseDate", FieldGroup::DriverAndStatus, "Driver date", false, Read<&GraphicCardInfo::GetDriverReleaseDate>},
    {"BiosVersion", FieldGroup::Identity, "BIOS version", false, Read<&GraphicCardInfo::GetBiosVersion>},
    {"NvidiaSli", FieldGroup::EccAndMultiGpu, "NVIDIA SLI", false, Read<&GraphicCardInfo::GetNvidiaSli>},
    {"AmdCrossfire", FieldGroup::EccAndMultiGpu, "AMD CrossFire", false, Read<&GraphicCardInfo::GetAmdCrossfire>},
    {"EccStatus", FieldGroup::EccAndMultiGpu, "ECC status", false, Read<&GraphicCardInfo::GetEccStatus>},
    {"EccSingleBitErrors", FieldGroup::EccAndMultiGpu, "Single-bit errors", false, Read<&GraphicCardInfo::GetEccSingleBitErrors>},
    {"EccDoubleBitErrors", FieldGroup::EccAndMultiGpu, "Double-bit errors", false, Read<&GraphicCardInfo::GetEccDoubleBitErrors>},
    {"AdapterName", FieldGroup::Identity, "Adapter name", false, Read<&GraphicCardInfo::GetAdapterName>},
    {"AdapterRam", FieldGroup::Memory, "Adapter memory", false, Read<&GraphicCardInfo::GetAdapterRam>},
    {"AdapterStatus", FieldGroup::DriverAndStatus, "Adapter status", false, Read<&GraphicCardInfo::GetAdapterStatus>},
    // clang-format on
}};

bool IsNeutral(const CardField& field, const FieldValue& value)
{
    if (const auto* text = std::get_if<std::string>(&value)) {
        return text->empty() || *text == "Unknown" || *text == "UNKNOWN";
    }
    if (field.IsZeroAnAnswer) {
        return false;
    }
    const auto isZero = [](const auto& number) {
        using Number = std::decay_t<decltype(number)>;
        if constexpr (std::is_same_v<Number, std::string>) {
            return false;
        } else {
            return number == Number{};
        }
    };
    return std::visit(isZero, value);
}

std::string ToDisplayText(const FieldValue& value)
{
    if (const auto* text = std::get_if<std::string>(&value)) {
        return *text;
    }
    if (const auto* flag = std::get_if<bool>(&value)) {
        return *flag ? "yes" : "no";
    }
    char digits[64];
    const auto convert = [&digits](auto number) { return std::to_chars(digits, digits + sizeof(digits), number).ptr; };
    const auto* count = std::get_if<unsigned int>(&value);
    return std::string(digits, count ? convert(*count) : convert(std::get<float>(value)));
}

} // namespace orvel::tools
