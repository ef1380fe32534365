#pragma once

#include <cstdint>

namespace orvel::simulation {

/// A published NVAPI function of one physical GPU, with its id for nvapi_QueryInterface.
struct NvapiFunction {
    uint32_t id;
    const char* name;
    void* function;
};

/// The simulated function of one GPU with this id, or null.
const NvapiFunction* FindNvapiGpuFunction(uint32_t id);

} // namespace orvel::simulation
