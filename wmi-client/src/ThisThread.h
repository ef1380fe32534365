#pragma once

#include <cstdint>

namespace orvel::shared::wmi {

/// A number that is never reused for another thread, unlike the system's thread ids.
uint64_t ThisThread();

} // namespace orvel::shared::wmi
