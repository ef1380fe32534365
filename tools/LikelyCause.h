#pragma once

#include <cstdint>
#include <string>

namespace orvel::tools {

/// Whether the library knows how much memory of this type (SMBIOS's code) transfers; without that it lists no card of Intel.
bool HasTransferFactor(uint32_t memoryType);

/// Whether the library knows a name for memory of this type; without one it lists no card of Intel or NVIDIA. Type 16 has a
/// name and no factor.
bool HasMemoryName(uint32_t memoryType);

/// Intel's adapters that OpenCL does not list under WMI's names, in quotes and separated by commas; "" where it lists all.
std::string IntelAdaptersWithoutOpenCl();

/// What on this computer probably brought about the message that ended a vendor's run; "" where nothing can be seen of it.
/// `lastWarning` is the last warning of that run, "" where it had none.
std::string LikelyCause(const std::string& message, const std::string& lastWarning);

} // namespace orvel::tools
