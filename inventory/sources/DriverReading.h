#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <vector>

#include "model/Value.h"

namespace orvel::shared::inventory {

/// A place on PCI, as far as somebody knows it.
struct PciAddress {
    std::optional<uint64_t> segment;
    std::optional<uint64_t> bus;
    std::optional<uint64_t> device;
    std::optional<uint64_t> function;
};

/// A card as its vendor's driver lists it: what it is matched by, and what the driver says about it.
struct DriverDevice {
    std::optional<uint64_t> luid;
    PciAddress address;
    std::optional<uint32_t> vendorId;
    std::optional<uint32_t> deviceId;
    std::optional<uint32_t> subsystemId;
    std::optional<uint32_t> revision;
    std::map<Property, Answer> answers; ///< the same properties for every device of a source
};

/// What a vendor's library has listed.
struct DriverReading {
    Answer end = Known(true); ///< otherwise why the listing is not complete
    std::vector<DriverDevice> devices;
};

/// Returns the function of a published name; null where the installed driver lacks it.
using FunctionLookup = std::function<void*(const char* name)>;

/// The answer of a driver's call: its value for status 0, `unsupported` for the driver's own number of that, otherwise
/// `failed` with the number. `unavailable` where the driver lacks the function.
Answer DriverAnswer(std::optional<int32_t> status, int32_t notSupported, const Answer& value);

/// The text in a buffer that a driver has filled: printable ASCII with a terminator, or `unavailable`.
Answer DriverText(const char* buffer, std::size_t size);

/// 0 is no vendor, no device and no subsystem.
std::optional<uint32_t> KnownIdentifier(uint32_t number);

} // namespace orvel::shared::inventory
