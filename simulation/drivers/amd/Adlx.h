#pragma once

namespace orvel::simulation {

/// Starts ADLX anew on the machine in place; the objects of the machine before are gone.
void ResetAdlx();

} // namespace orvel::simulation
