#pragma once

#include <cstddef>
#include <string>

namespace orvel::shared::enumeration {

/// The UTF-16 text in the data of a registry value, up to its first NUL. The data come from any driver's setup: they need
/// neither end in a NUL nor hold whole units, and an odd last byte is none.
std::u16string RegistryText(const unsigned char* data, std::size_t bytes);

/// Whether a "MatchingDeviceId" of the form pci\ven_vvvv&dev_dddd… names the adapter of these identifiers, upper and lower
/// case apart.
bool IsMatchingDevice(const std::string& matchingDeviceId, const std::string& vendorId, const std::string& deviceId);

} // namespace orvel::shared::enumeration
