#pragma once

#include <string>

#include "formulas/PnpDeviceId.h"

namespace orvel::shared::enumeration {

/// System memory in whole GiB that DXGI shares with an adapter, as decimal text; "0" when DXGI does not list the adapter, ""
/// when DXGI is not available. The identifiers are hexadecimal texts; that of the subsystem may contain a "-". Throws
/// std::invalid_argument ("invalid stoi argument", "invalid stoul argument") and std::out_of_range ("stoi argument out of
/// range", "stoul argument out of range") for other texts.
std::string GetSharedSystemMemory(const PnpDeviceId& adapter);

} // namespace orvel::shared::enumeration
