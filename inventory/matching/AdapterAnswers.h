#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "matching/AdapterMatching.h"
#include "model/Value.h"
#include "sources/DisplayConfig.h"
#include "sources/Dxgi.h"

namespace orvel::shared::inventory {

/// What DXGI says about a device. `end` is how DXGI's listing has ended: it is the reason for a card without an adapter.
SourceAnswers DxgiAnswers(const DeviceFacts& device, const AdapterMatch& match, const std::vector<DxgiAdapter>& adapters,
                          const Answer& end);

/// What DXGI says about an adapter that is a card of its own.
SourceAnswers DxgiAnswers(const DxgiAdapter& adapter);

/// Whether an adapter is a remote session's, which shows the card that renders for it.
bool IsRemote(const DxgiAdapter& adapter);

/// The displays of the adapter with a LUID, in the order of their GDI names.
Displays DisplaysOf(uint64_t luid, const std::vector<DisplayPath>& paths);

} // namespace orvel::shared::inventory
