#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace orvel::shared::enumeration {

/// PCI device identifier, 4 lower-case hexadecimal digits, from NVAPI's device id, whose upper half it is.
std::string NvidiaDeviceId(uint32_t deviceId);

/// PCI subsystem identifier, 4 lower-case hexadecimal digits, "-", 4 more, from NVAPI's subsystem id.
std::string NvidiaSubsystemId(uint32_t subsystemId);

/// Transfer rate in MB/s of one lane of a PCI Express generation (1 to 5); no value for any other.
std::optional<uint32_t> PcieLaneRate(uint32_t generation);

/// Bandwidth in GB/s of a memory clock in MHz, two transfers per clock, on a bus of so many bits.
float NvidiaMemoryBandwidth(uint32_t clockMegahertz, uint32_t widthBits);

/// Compute capability as a number, such as 8.6.
float CudaCapability(int32_t major, int32_t minor);

/// Kilohertz in MHz.
float ToMegahertz(uint32_t kilohertz);

} // namespace orvel::shared::enumeration
