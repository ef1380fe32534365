#pragma once

#include <string>

namespace orvel::shared::enumeration {

// The WQL texts, in UTF-8, of the queries for a vendor's adapters.

/// The rows of all adapters of a PCI vendor, such as "8086".
std::string AdapterQuery(const std::string& vendorId);

/// The rows of Intel's adapters.
std::string IntelAdapterQuery();

/// The rows of NVIDIA's adapters with a device id of four hexadecimal digits; all of them for an empty id.
std::string NvidiaAdapterQuery(const std::string& deviceId);

/// The rows of AMD's adapters with a name. Intended: the name is not escaped, so the query fails if it contains an
/// apostrophe.
std::string AmdAdapterQuery(const std::string& name);

} // namespace orvel::shared::enumeration
