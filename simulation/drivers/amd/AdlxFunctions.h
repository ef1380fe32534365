#pragma once

#include "drivers/amd/AdlxSession.h"

namespace orvel::simulation {

/// The interfaces of the two objects that an initialisation returns.
extern const AdlxInterface adlxSystemInterface, adlxMappingInterface;

} // namespace orvel::simulation
