#pragma once

#include <cstdint>
#include <string>

namespace orvel::simulation {

/// The caller's function that gives ADL memory.
using AdlAllocate = void*(__stdcall*)(int32_t bytes);

/// A context of its own for each call.
void* NewAdlContext(AdlAllocate allocate);

/// False for one that is not alive.
bool DestroyAdlContext(void* context);

bool IsAdlContextAlive(void* context);

/// Memory as ADL takes it from the context's caller; null where the context is not alive or the caller gives none.
void* AllocateFromAdlCaller(void* context, int32_t bytes);

} // namespace orvel::simulation
