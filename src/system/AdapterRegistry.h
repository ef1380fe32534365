#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/KnownKey.h"

namespace orvel::shared::enumeration {

/// Cache of the registry keys that the searches for adapters have read, so that a run reads each key once. Each member is
/// empty until a search needs it.
struct AdapterRegistry {
    std::optional<std::vector<std::string>> PciDevices; ///< names of the keys of all PCI devices
    std::optional<KnownKey> Video;                      ///< the display drivers' keys
};

} // namespace orvel::shared::enumeration
