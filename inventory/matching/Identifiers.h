#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvel::shared::inventory {

/// The numbers of a card as DXGI has them. A device does not always have all of them.
struct Identifiers {
    std::optional<uint32_t> vendor;
    std::optional<uint32_t> device;
    std::optional<uint32_t> subsystem;
    std::optional<uint32_t> revision;

    bool operator==(const Identifiers&) const = default;
};

/// The identifiers in a hardware or instance id: PCI\VEN_10DE&DEV_2504&SUBSYS_…&REV_A1, ACPI\VEN_QCOM&DEV_0C36,
/// ACPI\QCOM0C36. The four letters of an ACPI identifier become the number whose bytes they are. Empty unless vendor and
/// device are there.
std::optional<Identifiers> IdentifiersIn(std::string_view id);

/// The first of several that has them.
std::optional<Identifiers> IdentifiersIn(const std::vector<std::string>& ids);

/// What a device hangs on: the text before the first backslash of an id, such as "PCI", in upper case.
std::string EnumeratorOf(std::string_view id);

/// Whether two cards may be the same: vendor and device are known and equal, and so is what else both have.
bool Agree(const Identifiers& left, const Identifiers& right);

} // namespace orvel::shared::inventory
