#pragma once

#include "sources/DriverReading.h"

namespace orvel::shared::inventory {

/// The memory that AMD's Display Library takes from its caller, and that ADLX releases.
void* __stdcall AllocateForAdl(int bytes);

/// Initialises ADLX, reads all of its GPUs, and terminates it. With a context of AMD's Display Library (ADL), ADLX also
/// knows the GPUs' places on PCI; without one, or where that fails, it is initialised alone. Where somebody else in the
/// process has initialised it already, nothing is read: terminating it would end their session too. `isStopped` is false
/// where ADLX may still run in its library, which must then stay loaded. May throw std::bad_alloc.
DriverReading ReadAdlx(const FunctionLookup& find, void* adlContext, bool& isStopped);

} // namespace orvel::shared::inventory
