#pragma once

namespace orvel::bench {

/// Looks up the functions that the product imports from DXGI and the desktop window manager.
void PrepareSystemFloor();

/// Reads the description of every DXGI adapter.
void ReadSharedMemory();

/// Queries whether desktop composition is on.
void ReadComposition();

} // namespace orvel::bench
