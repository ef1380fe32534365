#pragma once

#include <cstdint>

namespace orvel::shared::wmi {

/// A number that no other thread has or had, unlike the system's, which are reused.
uint64_t ThisThread();

} // namespace orvel::shared::wmi
