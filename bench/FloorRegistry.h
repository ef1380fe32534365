#pragma once

namespace orvel::bench {

/// Walks to the location of the PCI device whose key holds both texts, such as "8086" and "5917".
void ReadBusNumber(const char* vendorId, const char* deviceId);

/// Walks to the BIOS text of the display adapter.
void ReadBiosText(const wchar_t* vendorId, const wchar_t* deviceId);

} // namespace orvel::bench
