#pragma once

#include <cstdint>

namespace orvel::shared::enumeration {

// The machine's memory modules, from WMI's `Win32_PhysicalMemory`. Each reader opens its own WMI client. A query that
// fails is thrown as its 32-bit status (`long`); a property that cannot be read ends the scan with the reader's default.

/// SMBIOS type code of the first module that reports one; 2 ("unknown") when none does.
uint32_t GetMemoryType();

/// Clock in MHz: half of the fastest module's transfer rate; 0 when no module reports it.
float GetMemorySpeed();

/// Data width in bits of the first module that reports one; 0 when none does.
uint32_t GetTotalWidth();

/// Bandwidth of the machine's memory, see MemoryBandwidth. A memory type without a transfer factor is logged as an error
/// ("Error: Argument out of range") and intentionally makes the result infinite if speed and width are known.
float GetMemoryBandwidth();

} // namespace orvel::shared::enumeration
