#pragma once

#include <memory>

#include "machine/Machine.h"

namespace orvel::simulation {

/// The machine in place; one without any interface when none is. Its parts keep their addresses while it is held.
std::shared_ptr<const Machine> CurrentMachine();

void SetCurrentMachine(std::shared_ptr<const Machine> machine);

} // namespace orvel::simulation
