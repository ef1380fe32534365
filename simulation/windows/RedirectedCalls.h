#pragma once

namespace orvel::simulation {

/// Lets the calls that list devices, displays and Windows' DLLs lead to the simulation.
void PutCallsInPlace();

/// Lets them lead to Windows again. Once a call has hung they stay: its thread may be about to make the next one, with what
/// the simulation gave it.
void TakeCallsAway();

} // namespace orvel::simulation
