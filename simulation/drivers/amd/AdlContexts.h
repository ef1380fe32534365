#pragma once

#include <cstdint>
#include <string>

namespace orvel::simulation {

/// The caller's allocation function for ADL.
using AdlAllocate = void*(__stdcall*)(int32_t bytes);

/// Creates a new context on each call.
void* NewAdlContext(AdlAllocate allocate);

/// False for an invalid context.
bool DestroyAdlContext(void* context);

bool IsAdlContextAlive(void* context);

/// Memory from the allocation function of the context's caller; null if the context is invalid or the allocation fails.
void* AllocateFromAdlCaller(void* context, int32_t bytes);

} // namespace orvel::simulation
