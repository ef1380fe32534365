#pragma once

#include <memory>

#include "machine/Machine.h"

namespace orvel::simulation {

/// The machine in place, or a machine without interfaces. Its parts keep their addresses while a caller holds it.
std::shared_ptr<const Machine> CurrentMachine();

void SetCurrentMachine(std::shared_ptr<const Machine> machine);

} // namespace orvel::simulation
