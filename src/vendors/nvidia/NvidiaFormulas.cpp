#include "vendors/nvidia/NvidiaFormulas.h"

namespace orvel::shared::enumeration {

namespace {

std::string EightHexDigits(uint32_t number)
{
    std::string text(8, '0');
    for (auto digit = text.rbegin(); digit != text.rend(); ++digit, number >>= 4) {
        *digit = "0123456789abcdef"[number & 0xF];
    }
    return text;
}

} // namespace

std::string NvidiaDeviceId(uint32_t deviceId)
{
    return EightHexDigits(deviceId).substr(0, 4);
}

std::string NvidiaSubsystemId(uint32_t subsystemId)
{
    return EightHexDigits(subsystemId).insert(4, "-");
}

std::optional<uint32_t> PcieLaneRate(uint32_t generation)
{
    constexpr uint32_t megabytesPerSecond[] = {250, 500, 985, 1969, 3938};
    if (generation < 1 || generation > std::size(megabytesPerSecond)) {
        return std::nullopt;
    }
    return megabytesPerSecond[generation - 1];
}

float NvidiaMemoryBandwidth(uint32_t clockMegahertz, uint32_t widthBits)
{
    const float bitRate = static_cast<float>(widthBits) * static_cast<float>(clockMegahertz);
    return (bitRate + bitRate) * 0.0001220703125F; // 8 bits a byte, 1024 megabytes a gigabyte
}

float CudaCapability(int32_t major, int32_t minor)
{
    return static_cast<float>(major + minor / 10.0);
}

float ToMegahertz(uint32_t kilohertz)
{
    return static_cast<float>(kilohertz / 1000.0);
}

} // namespace orvel::shared::enumeration
