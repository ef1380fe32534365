#include "AmdRun.h"

#include <algorithm>

#include <doctest/doctest.h>

namespace orvel::tests {

const std::string adlReady = Line("error", "ADLWrapper::ADLWrapper", "ADL initialized successfully");
const std::string adlFailed = Line("error", "ADLWrapper::ADLWrapper", "ADL initialization failed");
const std::string adlDestroyed = Line("error", "ADLWrapper::~ADLWrapper", "ADL Destroyed successfully");
const std::string adlxReady = Line("error", "AMD::QueryInfo", "ADLX initialized successfully");
const std::string adlxFailed = Line("error", "AMD::QueryInfo", "ADLX initialization failed");
const std::string noServices = Line("error", "AMD::QueryInfo", "Failed to get 3DSettings services");
const std::string fillRateDone = Line("error", "ADLWrapper::GetPixelFillRate", "GetPixelFillRateMax done.");

namespace {

std::string EndLine(const std::string& reason)
{
    return Line("error", "GraphicCardEnumeration::QueryGraphicCards", "Unexpected error occurred: " + reason);
}

Enumerated Run(const Json& machine, int adlxSessions)
{
    Enumerated result = Enumerate(machine);
    for (const std::string& line : {Line("error", "NvapiClient::NvapiClient", "Failed to initialize NvAPI. Status code: -2"),
                                    EndLine("Failed to initialize NVAPI. Status code: -2")}) {
        std::erase(result.Log, line);
    }
    for (const auto& [interface, objects] : result.Live) {
        CHECK_MESSAGE(objects == (interface == "adlx" ? adlxSessions : 0), interface << " has live objects");
    }
    return result;
}

} // namespace

Json AmdDesktop()
{
    return Machine("amd-desktop");
}

Json AmdTwoCards()
{
    Json machine = Machine("amd-two-cards");
    VideoController(machine, 1)
        .update({{"CurrentHorizontalResolution", 2560}, {"CurrentVerticalResolution", 1440}, {"CurrentRefreshRate", 60}});
    return machine;
}

Json& AdlAdapter(Json& machine, const std::string& index)
{
    return machine["adl"]["adapters"][index];
}

Json& AdlxGpu(Json& machine, size_t index)
{
    return machine["adlx"]["gpus"][index];
}

void FailQuery(Json& machine, const std::string& text, int nth)
{
    Json failure = {{"contains", text}, {"status", "0x80041001"}};
    if (nth > 0) {
        failure["nth"] = nth;
    }
    machine["wmi"]["failures"] = Json::array({failure});
}

Enumerated EnumerateAmd(const Json& machine)
{
    return Run(machine, 0);
}

Json OnlyCard(const Json& machine)
{
    const Enumerated result = EnumerateAmd(machine);
    REQUIRE(result.Cards.size() == 1);
    return result.Card(0);
}

std::vector<uint32_t> MemorySizes(const Enumerated& result)
{
    std::vector<uint32_t> sizes;
    for (const Json& card : result.Cards) {
        sizes.push_back(card["MemorySize"]);
    }
    return sizes;
}

Enumerated EnumerateLeavingAdlx(const Json& machine)
{
    const Enumerated result = Run(machine, 1);
    CHECK(Only(result.Trace, "adlx ADLXTerminate").empty());
    const Enumerated later = Run(AmdDesktop(), 0);
    CHECK(later.Cards.size() == 1);
    CHECK(later.Log == WholeRun({fillRateDone}));
    return result;
}

void CheckAmdEnds(const Json& machine, const std::string& reason, size_t recordsBefore)
{
    const Enumerated result = EnumerateAmd(machine);
    CHECK(result.Cards.size() == recordsBefore);
    CHECK(result.Thrown == nullptr);
    REQUIRE_FALSE(result.Log.empty());
    CHECK(result.Log.back() == EndLine(reason));
    CHECK(std::count(result.Log.begin(), result.Log.end(), adlDestroyed) == 1);
    const auto end = Only(result.Trace, "adl"); // ADLX's too
    REQUIRE(end.size() >= 2);
    CHECK(std::vector(end.end() - 2, end.end()) ==
          std::vector<std::string>{"adlx ADLXTerminate", "adl ADL2_Main_Control_Destroy"});
}

LogLines WholeRun(const LogLines& lines)
{
    LogLines log = {adlReady, adlxReady};
    log.insert(log.end(), lines.begin(), lines.end());
    log.insert(log.end(), {adlDestroyed, adlDestroyed}); // once by the end of the run, once by the wrapper's destructor
    return log;
}

} // namespace orvel::tests
