#pragma once

#include <string>

namespace orvel::shared::enumeration {

/// Digits of the bus in the first "bus,device,function" (three decimal numbers joined by commas) of a location text,
/// such as "1" of "@System32\drivers\pci.sys,#65536;PCI bus %1, device %2, function %3;(1,0,0)"; "" if it contains none.
std::string BusDigits(const std::string& location);

} // namespace orvel::shared::enumeration
