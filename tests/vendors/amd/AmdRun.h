#pragma once

#include "support/Enumerated.h"

namespace orvel::tests {

/// The machine of machines/amd-desktop.json: one Radeon, which answers everything. Tests change one thing about it.
Json AmdDesktop();

/// The machine of machines/amd-two-cards.json with a display on both cards: two equal Radeons, ADL adapters 0 and 5.
Json AmdTwoCards();

/// The values of an adapter in ADL, and of a GPU in ADLX.
Json& AdlAdapter(Json& machine, const std::string& index = "0");
Json& AdlxGpu(Json& machine, size_t index = 0);

/// Lets a WMI query fail: the `nth` one that contains the text, every one for 0.
void FailQuery(Json& machine, const std::string& text, int nth = 0);

/// Enumerates. The log is that of AMD alone: without NVIDIA's lines about a machine without its driver. Nothing may stay
/// open and nothing may be released too often.
Enumerated EnumerateAmd(const Json& machine);

/// The only record of a run that completes.
Json OnlyCard(const Json& machine);

/// The difference between the records of the two cards.
std::vector<uint32_t> MemorySizes(const Enumerated& result);

/// EnumerateAmd where ADLX stays loaded. It is enumerated once more on a healthy machine, which ends that.
Enumerated EnumerateLeavingAdlx(const Json& machine);

/// AMD's run ended with this exception: ADLX and ADL were ended in their order, and the records before it stay.
void CheckAmdEnds(const Json& machine, const std::string& reason, size_t recordsBefore = 0);

/// The lines of a run.
extern const std::string adlReady;
extern const std::string adlFailed;
extern const std::string adlDestroyed;
extern const std::string adlxReady;
extern const std::string adlxFailed;
extern const std::string noServices;
extern const std::string fillRateDone;

/// The log of a run through to the end in which ADLX is initialised.
LogLines WholeRun(const LogLines& lines);

} // namespace orvel::tests
