#pragma once

namespace orvel::bench {

/// Looks up what the product imports of DXGI and the desktop window manager.
void PrepareSystemFloor();

/// Describes every adapter of DXGI.
void ReadSharedMemory();

/// Asks whether desktop composition is on.
void ReadComposition();

} // namespace orvel::bench
