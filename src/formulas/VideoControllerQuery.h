#pragma once

#include <string>

namespace orvel::shared::enumeration {

// The texts, in UTF-8, that ask WMI for the rows of a vendor's adapter.

/// The rows of all adapters of a PCI vendor, such as "8086".
std::string AdapterQuery(const std::string& vendorId);

/// The rows of Intel's adapters.
std::string IntelAdapterQuery();

/// The rows of NVIDIA's adapters of a device id of four hexadecimal digits; of all of them for an empty one.
std::string NvidiaAdapterQuery(const std::string& deviceId);

/// The rows of AMD's adapters of a name. Intended: the name stands in the text as it is, so an apostrophe in it makes the
/// query fail.
std::string AmdAdapterQuery(const std::string& name);

} // namespace orvel::shared::enumeration
