// If any single allocation fails, nothing stays open, the process continues, and the other vendors run.

#include <new>
#include <optional>

#include <doctest/doctest.h>

#include "GraphicCardEnumeration.h"
#include "GraphicCardLog.h"
#include "support/FailingMemory.h"
#include "support/SimulatedRun.h"
#include "vendors/amd/ADLWrapper.h"
#include "vendors/nvidia/NvapiClient.h"
#include "vendors/nvidia/NvmlClient.h"

using namespace orvel::shared::enumeration;
using namespace orvel::tests;

namespace {

void TakeNothing(int, const char*, const char*, void*) {}

/// Runs `operation` once for each of its allocations, which then fails. Returns the number of allocations.
template <typename Operation, typename Check>
size_t FailEachAllocation(FailingMemory::Until until, size_t step, Operation operation, Check check)
{
    for (size_t successes = 0;; successes += step) {
        CAPTURE(successes);
        bool hasFailed = false;
        {
            const FailingMemory memory(successes, until);
            operation();
            hasFailed = FailingMemory::HasFailed();
        }
        check();
        if (!hasFailed) {
            return successes;
        }
    }
}

/// Constructs a client of an interface, and ignores failure.
template <typename Client>
void Make()
{
    try {
        const Client client;
    } catch (const std::exception&) {
    }
}

template <typename Client>
void CheckLeavesNothingOpen(const char* driver, const Json& machine)
{
    Simulate(machine);
    SetGraphicCardLog(TakeNothing, 6, nullptr);
    const size_t allocations =
        FailEachAllocation(FailingMemory::Until::Next, 1, Make<Client>, [&] { CHECK(Live()[driver] == 0); });
    CHECK(allocations > 0);
    SetGraphicCardLog(nullptr, 0, nullptr);
}

} // namespace

TEST_CASE("If memory runs out while an NVAPI client is constructed, NVAPI is unloaded")
{
    Json machine = Machine("workstation");
    SUBCASE("GPUs") {}
    SUBCASE("a failing GPU list")
    {
        machine["nvapi"]["NvAPI_EnumPhysicalGPUs"] = -1;
    }
    CheckLeavesNothingOpen<NvapiClient>("nvapi", machine);
}

TEST_CASE("If memory runs out while an NVML client is constructed, NVML is shut down")
{
    CheckLeavesNothingOpen<NvmlClient>("nvml", Machine("workstation"));
}

TEST_CASE("An ADL wrapper without memory for its log lines destroys its context")
{
    CheckLeavesNothingOpen<ADLWrapper>("adl", Machine("workstation"));
}

TEST_CASE("If memory runs out, a vendor's run or a log line is lost, and the process continues")
{
    Simulate(Machine("workstation"));
    LogLines messages;
    messages.reserve(64);
    const auto take = [](int, const char*, const char* message, void* context) {
        static_cast<LogLines*>(context)->push_back(message);
    };
    SetGraphicCardLog(take, 6, &messages);
    bool hasEndedRun = false;
    for (const auto until : {FailingMemory::Until::Next, FailingMemory::Until::End}) {
        FailEachAllocation(
            until, 37,
            [&] {
                messages.clear();
                std::optional<GraphicCardEnumeration> cards;
                try {
                    cards.emplace();
                    cards->QueryGraphicCards();
                } catch (const std::bad_alloc&) {
                    CHECK((!cards || cards->size() == 0)); // only before the first vendor's run
                }
            },
            [&] {
                for (const auto& [driver, count] : Live()) {
                    CAPTURE(driver);
                    CHECK(count == 0);
                }
                for (const std::string& message : messages) {
                    if (message.starts_with("Unexpected error occurred: ")) {
                        CHECK(message == "Unexpected error occurred: bad allocation");
                        hasEndedRun = true;
                    }
                }
            });
    }
    CHECK(hasEndedRun);
    SetGraphicCardLog(nullptr, 0, nullptr);
}
