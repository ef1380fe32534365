#pragma once

namespace orvel::simulation {

/// Forgets the initialisations that the machine before was left with.
void ResetNvml();

} // namespace orvel::simulation
