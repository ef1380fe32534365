#pragma once

#include "support/Enumerated.h"

namespace orvel::tests {

/// The machine of machines/amd-desktop.json: one Radeon that supports everything. Tests change one thing about it.
Json AmdDesktop();

/// The machine of machines/amd-two-cards.json with a display on both cards: two equal Radeons, ADL adapters 0 and 5.
Json AmdTwoCards();

/// The values of an adapter in ADL, and of a GPU in ADLX.
Json& AdlAdapter(Json& machine, const std::string& index = "0");
Json& AdlxGpu(Json& machine, size_t index = 0);

/// Makes a WMI query fail: the `nth` query that contains the text, or all of them if 0.
void FailQuery(Json& machine, const std::string& text, int nth = 0);

/// Enumerates, and removes NVIDIA's lines about a missing driver from the log. Checks that nothing stays open and nothing is
/// released too often.
Enumerated EnumerateAmd(const Json& machine);

/// The only record of a run that completes.
Json OnlyCard(const Json& machine);

/// The property in which the records of the two cards differ.
std::vector<uint32_t> MemorySizes(const Enumerated& result);

/// EnumerateAmd for a run that leaves ADLX loaded. A second enumeration on a healthy machine then terminates ADLX.
Enumerated EnumerateLeavingAdlx(const Json& machine);

/// Checks that AMD's run ends with this exception, terminates ADLX and then ADL, and keeps the records before it.
void CheckAmdEnds(const Json& machine, const std::string& reason, size_t recordsBefore = 0);

/// Log lines of a run.
extern const std::string adlReady;
extern const std::string adlFailed;
extern const std::string adlDestroyed;
extern const std::string adlxReady;
extern const std::string adlxFailed;
extern const std::string noServices;
extern const std::string fillRateDone;

/// The log of a run that initialises ADLX and completes.
LogLines WholeRun(const LogLines& lines);

} // namespace orvel::tests
