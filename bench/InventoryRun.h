#pragma once

namespace orvel::bench {

/// Takes one inventory of all depths on the machine that is in place; the DLL is loaded by the first one. Throws
/// std::runtime_error.
void RunInventory();

} // namespace orvel::bench
