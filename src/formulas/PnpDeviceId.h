#pragma once

#include <string>

namespace orvel::shared::enumeration {

/// The parts of a Plug and Play identifier of the form PCI\VEN_vvvv&DEV_dddd&SUBSYS_ssssSSSS&REV_rr….
struct PnpDeviceId {
    std::string Vendor;    ///< vvvv
    std::string Device;    ///< dddd
    std::string Subsystem; ///< ssss-SSSS: subsystem device, subsystem vendor
};

/// `count` characters from `position`, fewer if the text ends first.
/// Throws std::out_of_range ("invalid string position") when the text ends before the position.
std::string Cut(const std::string& text, std::size_t position, std::size_t count);

/// Cuts the parts from their fixed positions; throws like Cut for a text that is too short.
PnpDeviceId ParsePnpDeviceId(const std::string& text);

/// The subsystem alone.
std::string SubsystemOf(const std::string& text);

/// Whether a driver's "MatchingDeviceId" of the form pci\ven_vvvv&dev_dddd… names the adapter of this vendor and device,
/// case-sensitively.
bool IsMatchingDevice(const std::string& matchingDeviceId, const PnpDeviceId& adapter);

} // namespace orvel::shared::enumeration
