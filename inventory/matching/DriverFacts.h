#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvel::shared::inventory {

/// NVIDIA's own version of a driver from the Windows version: the last digit of the third field and the four digits of the
/// last one, as in 32.0.15.9672, which is 596.72. Empty for a text of another form.
std::optional<std::string> NvidiaDriverVersion(std::string_view windowsVersion);

/// The date of a FILETIME (100 nanoseconds since 1601, UTC) as YYYY-MM-DD; empty for 0 and after the year 9999.
std::optional<std::string> IsoDate(uint64_t fileTime);

} // namespace orvel::shared::inventory
