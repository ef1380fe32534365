#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace orvel::shared::inventory {

constexpr int lostGpu = 15;              ///< NVML's number for a call that goes wrong
constexpr int32_t refusedByNvapi = -220; ///< NVAPI's: the GPU has no power

/// The exports of the fake platform's vendor DLLs. Each has two GPUs, in different orders.
std::map<std::string, void*> NvmlExports();
std::map<std::string, void*> NvapiExports();

} // namespace orvel::shared::inventory
