#include "CardFields.h"

#include <charconv>
#include <string_view>

namespace orvel::tools {

using shared::enumeration::GraphicCardInfo;

#define CARD_FIELD(name, group, label, unit, nvidiaUnit)                                                                    \
    CardField                                                                                                               \
    {                                                                                                                       \
#name, FieldGroup::group, label, unit, nvidiaUnit,                                                                  \
            [](const GraphicCardInfo& card) { return FieldValue(card.Get##name()); }                                        \
    }

// clang-format off: one property a line.
const std::array<CardField, 49> cardFields = {
    CARD_FIELD(AvailabilityCode, DriverAndStatus, "Availability code", "", ""),
    CARD_FIELD(AvailabilityStatus, DriverAndStatus, "Availability", "", ""),
    CARD_FIELD(ConfigError, DriverAndStatus, "Configuration error", "", ""),
    CARD_FIELD(ConfigErrorStatus, DriverAndStatus, "Configuration", "", ""),
    CARD_FIELD(UserConfig, DriverAndStatus, "User configuration", "", ""),
    CARD_FIELD(CurrentResolution, Display, "Resolution", "", ""),
    CARD_FIELD(CurrentRefreshRate, Display, "Refresh rate", "Hz", "Hz"),
    CARD_FIELD(DriverVersion, DriverAndStatus, "Driver version", "", ""),
    CARD_FIELD(IsAeroEnabled, Display, "Desktop composition", "", ""),
    CARD_FIELD(GraphicsCardSn, Identity, "Serial number", "", ""),
    CARD_FIELD(BusId, Bus, "PCI bus", "", ""),
    CARD_FIELD(DeviceId, Identity, "Device id", "", ""),
    CARD_FIELD(SubsystemId, Identity, "Subsystem id", "", ""),
    CARD_FIELD(CardName, Identity, "Card name", "", ""),
    CARD_FIELD(ChipName, Identity, "Chip name", "", ""),
    CARD_FIELD(Manufacturer, Identity, "Manufacturer", "", ""),
    CARD_FIELD(BusInterface, Bus, "Bus interface", "", ""),
    CARD_FIELD(PcieGeneration, Bus, "PCIe generation", "", ""),
    CARD_FIELD(PciTransferRate, Bus, "PCIe transfer rate", "MB/s", "MB/s"),
    CARD_FIELD(PciLanes, Bus, "PCIe lanes", "", ""),
    CARD_FIELD(PixelFillRate, ClocksAndRates, "Pixel fill rate", "Gpixel/s", "Gpixel/s"),
    CARD_FIELD(TextureFillRate, ClocksAndRates, "Texture fill rate", "Gtexel/s", "Gtexel/s"),
    CARD_FIELD(CudaCapability, Processing, "CUDA capability", "", ""),
    CARD_FIELD(MaxTemperature, ThermalLimits, "Maximum", "°C", "°C"),
    CARD_FIELD(TemperateSlowdown, ThermalLimits, "Slowdown", "°C", "°C"),
    CARD_FIELD(TemperatureShutdown, ThermalLimits, "Shutdown", "°C", "°C"),
    CARD_FIELD(GpuType, Identity, "GPU type", "", ""),
    CARD_FIELD(MultiGpuSupport, EccAndMultiGpu, "Multi-GPU", "", ""),
    CARD_FIELD(GpuClockMax, ClocksAndRates, "GPU clock", "MHz", "MHz"),
    CARD_FIELD(GpuBoostClock, ClocksAndRates, "GPU boost clock", "MHz", "MHz"),
    CARD_FIELD(MemoryClockMax, ClocksAndRates, "Memory clock", "MHz", "MHz"),
    CARD_FIELD(MemoryBoostClock, ClocksAndRates, "Memory boost clock", "MHz", "MHz"),
    CARD_FIELD(MemorySize, Memory, "Memory size", "MiB", "bytes (low 32 bits)"),
    CARD_FIELD(MemorySharedSize, Memory, "Shared memory", "GiB", "bytes (low 32 bits)"),
    CARD_FIELD(MemoryType, Memory, "Memory type", "", ""),
    CARD_FIELD(MemoryBandwidth, Memory, "Memory bandwidth", "", "GB/s"),
    CARD_FIELD(MemoryBusWidth, Memory, "Memory bus width", "bit", "bit"),
    CARD_FIELD(Cores, Processing, "Cores", "", ""),
    CARD_FIELD(Shaders, Processing, "Shaders", "", ""),
    CARD_FIELD(DriverReleaseDate, DriverAndStatus, "Driver date", "", ""),
    CARD_FIELD(BiosVersion, Identity, "BIOS version", "", ""),
    CARD_FIELD(NvidiaSli, EccAndMultiGpu, "NVIDIA SLI", "", ""),
    CARD_FIELD(AmdCrossfire, EccAndMultiGpu, "AMD CrossFire", "", ""),
    CARD_FIELD(EccStatus, EccAndMultiGpu, "ECC status", "", ""),
    CARD_FIELD(EccSingleBitErrors, EccAndMultiGpu, "Single-bit errors", "", ""),
    CARD_FIELD(EccDoubleBitErrors, EccAndMultiGpu, "Double-bit errors", "", ""),
    CARD_FIELD(AdapterName, Identity, "Adapter name", "", ""),
    CARD_FIELD(AdapterRam, Memory, "Adapter memory", "MiB", "MiB"),
    CARD_FIELD(AdapterStatus, DriverAndStatus, "Adapter status", "", ""),
};
// clang-format on

namespace {

/// Properties in which 0 or "no" is an answer like any other.
constexpr std::string_view zeroIsTold[] = {"AvailabilityCode", "ConfigError", "UserConfig", "IsAeroEnabled", "BusId"};

} // namespace

bool IsNotTold(const CardField& field, const FieldValue& value)
{
    if (const auto* text = std::get_if<std::string>(&value)) {
        return text->empty() || *text == "Unknown" || *text == "UNKNOWN";
    }
    for (const std::string_view name : zeroIsTold) {
        if (name == field.Name) {
            return false;
        }
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
