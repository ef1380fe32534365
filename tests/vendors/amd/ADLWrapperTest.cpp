#include "vendors/amd/ADLWrapper.h"

#include <doctest/doctest.h>

#include "support/HostLog.h"

using namespace orvel::shared::enumeration;
using namespace orvel::tests;

namespace {

constexpr int adapter = 7;
constexpr int refused = -1;

const std::string ready = "error ADLWrapper::ADLWrapper: ADL initialized successfully";
const std::string destroyed = "error ADLWrapper::~ADLWrapper: ADL Destroyed successfully";

/// A machine whose adapter answers one function.
Json MachineWith(const std::string& function, const Json& answer)
{
    return {{"adl", {{"adapters", {{std::to_string(adapter), {{function, answer}}}}}}}};
}

/// The answer of a call that fails although it writes.
Json Refused(const Json& value)
{
    return {{"status", refused}, {"value", value}};
}

/// A machine whose adapter answers every function, and with something else than the default.
Json TalkativeMachine()
{
    return {{"adl",
             {{"adapters",
               {{std::to_string(adapter),
                 {{"ADL2_Adapter_Graphic_Core_Info_Get", {{"iNumCUs", 36}, {"iNumPEsPerCU", 128}, {"iNumROPs", 96}}},
                  {"ADL2_Adapter_Crossfire_Get", {{"iSupported", 1}}},
                  {"ADL_Overdrive5_CurrentActivity_Get", Refused({{"iMaximumBusLanes", 16}})},
                  {"ADL2_Workstation_ECC_Caps", 5},
                  {"ADL2_Workstation_ECC_Get", Refused({{"default", 0}, {"current", 2}, {"desired", 0}})},
                  {"ADL2_Workstation_ECCData_Get", Refused({{"iSec", 4}, {"iDed", 3}})}}}}}}}};
}

/// All values that are read of an adapter.
struct Answers {
    uint32_t Cores = 4608;
    uint32_t Rops = 96;
    bool Crossfire = true;
    uint32_t PciLanes = 16;
    uint32_t EccStatus = 2;
    uint32_t EccSingleBitErrors = 4;
    uint32_t EccDoubleBitErrors = 3;
    bool operator==(const Answers&) const = default;
};

constexpr Answers none{0, 0, false, 0, 0, 0, 0};

Answers Ask(int index = adapter)
{
    const ADLWrapper adl;
    return {adl.GetCores(index),
            adl.GetRops(index),
            adl.GetCrossfire(index),
            adl.GetPciLanes(index),
            adl.GetEccStatus(index),
            adl.GetEccSingleBitErrors(index),
            adl.GetEccDoubleBitErrors(index)};
}

uint32_t CoresOf(int units, int elements)
{
    Simulate(MachineWith("ADL2_Adapter_Graphic_Core_Info_Get", {{"iNumCUs", units}, {"iNumPEsPerCU", elements}}));
    return ADLWrapper().GetCores(adapter);
}

uint32_t LanesOf(const Json& answer)
{
    Simulate(MachineWith("ADL_Overdrive5_CurrentActivity_Get", answer));
    return ADLWrapper().GetPciLanes(adapter);
}

Json Modes(int current)
{
    return {{"default", 6}, {"current", current}, {"desired", 8}};
}

uint32_t EccStatusOf(const Json& supported, const Json& modes)
{
    Json machine = MachineWith("ADL2_Workstation_ECC_Caps", supported);
    machine["adl"]["adapters"][std::to_string(adapter)]["ADL2_Workstation_ECC_Get"] = modes;
    Simulate(machine);
    return ADLWrapper().GetEccStatus(adapter);
}

} // namespace

TEST_CASE("Without ADL's library there is one line, no context, and every property has its default")
{
    Simulate(Json::object());
    HostLog log;
    CHECK(ADLWrapper().GetContext() == nullptr);
    CHECK(log.Lines == LogLines{"error ADLWrapper::ADLWrapper: ADL initialization failed", destroyed});
    CHECK(Ask() == none);
    CHECK(Trace().empty());
}

TEST_CASE("A wrapper holds one ADL context until it is destroyed")
{
    Simulate(TalkativeMachine());
    {
        const ADLWrapper adl;
        CHECK(adl.GetContext() != nullptr);
        CHECK(Live()["adl"] == 1);
    }
    CHECK(Live()["adl"] == 0);
    CHECK(Trace() == std::vector<std::string>{"adl ADL2_Main_Control_Create", "adl ADL2_Main_Control_Destroy"});
}

TEST_CASE("ADL is said to be initialised, as an error, even where no context was created")
{
    Json machine = TalkativeMachine();
    SUBCASE("a context") {}
    SUBCASE("a refusal")
    {
        machine["adl"]["ADL2_Main_Control_Create"] = refused;
        machine["adl"]["context"] = false;
    }
    SUBCASE("no context")
    {
        machine["adl"]["context"] = false;
    }
    SUBCASE("no such function")
    {
        machine["adl"]["missing"] = Json::array({"ADL2_Main_Control_Create"});
    }
    Simulate(machine);
    HostLog log;
    CHECK((ADLWrapper().GetContext() != nullptr) == (machine["adl"].size() == 1));
    CHECK(log.Lines == LogLines{ready, destroyed});
    CHECK(Live()["adl"] == 0);
}

TEST_CASE("Only the context shows whether it was created, not the result of the call")
{
    Json machine = TalkativeMachine();
    machine["adl"]["ADL2_Main_Control_Create"] = refused;
    Simulate(machine);
    CHECK(ADLWrapper().GetContext() != nullptr);
    CHECK(Only(Trace(), "adl ADL2_Main_Control_Destroy").size() == 1);
    CHECK(Live()["adl"] == 0);
}

TEST_CASE("A context that was never created is not destroyed")
{
    Json machine = TalkativeMachine();
    machine["adl"]["context"] = false;
    Simulate(machine);
    CHECK(ADLWrapper().GetContext() == nullptr);
    CHECK(Trace() == std::vector<std::string>{"adl ADL2_Main_Control_Create"});
}

TEST_CASE("Adapters are asked without a context too, where the function that needs none answers alone")
{
    Json machine = TalkativeMachine();
    machine["adl"]["context"] = false;
    Simulate(machine);
    CHECK(Ask() == Answers{0, 0, false, 16, 0, 0, 0});
    CHECK(Only(Trace(), "adl ADL2_Workstation").size() == 3); // no mode without ECC
}

TEST_CASE("Destroying a wrapper again only logs again")
{
    Simulate(TalkativeMachine());
    HostLog log;
    {
        ADLWrapper adl;
        adl.Destroy();
        CHECK(adl.GetContext() == nullptr);
        CHECK(Live()["adl"] == 0);
        adl.Destroy();
    }
    CHECK(log.Lines == LogLines{ready, destroyed, destroyed, destroyed});
    CHECK(Trace() == std::vector<std::string>{"adl ADL2_Main_Control_Create", "adl ADL2_Main_Control_Destroy"});
}

TEST_CASE("Where the function that destroys contexts is missing the context stays, and the wrapper forgets it")
{
    Json machine = TalkativeMachine();
    machine["adl"]["missing"] = Json::array({"ADL2_Main_Control_Destroy"});
    Simulate(machine);
    HostLog log;
    ADLWrapper adl;
    CHECK(adl.GetContext() != nullptr);
    adl.Destroy();
    CHECK(adl.GetContext() == nullptr);
    CHECK(Live()["adl"] == 1);
    CHECK(log.Lines == LogLines{ready, destroyed});
}

TEST_CASE("An adapter that answers everything has all its properties")
{
    Simulate(TalkativeMachine());
    CHECK(Ask() == Answers{});
}

TEST_CASE("A missing function leaves its own properties at their defaults, and only those")
{
    struct Case {
        const char* Function;
        Answers Expected;
    };
    for (const auto& [function, expected] : {
             Case{"ADL2_Adapter_Graphic_Core_Info_Get", {.Cores = 0, .Rops = 0}},
             Case{"ADL2_Adapter_Crossfire_Get", {.Crossfire = false}},
             Case{"ADL_Overdrive5_CurrentActivity_Get", {.PciLanes = 0}},
             Case{"ADL2_Workstation_ECC_Caps", {.EccStatus = 0}},
             Case{"ADL2_Workstation_ECC_Get", {.EccStatus = 5}}, // the flag of the first call
             Case{"ADL2_Workstation_ECCData_Get", {.EccSingleBitErrors = 0, .EccDoubleBitErrors = 0}},
             Case{"ADL_Adapter_ObservedClockInfo_Get", {}},
         }) {
        CAPTURE(function);
        Json machine = TalkativeMachine();
        machine["adl"]["missing"] = Json::array({function});
        Simulate(machine);
        CHECK(Ask() == expected);
        CHECK(Live()["adl"] == 0);
    }
}

TEST_CASE("An adapter that ADL does not know has the defaults: what a failing call leaves unwritten is 0")
{
    Simulate(TalkativeMachine());
    CHECK(Ask(adapter + 1) == none);
    Simulate({{"adl", {{"adapters", {{std::to_string(adapter), Json::object()}}}}}});
    CHECK(Ask() == none);
}

TEST_CASE("Cores are compute units times elements, 0 unless both are above 0")
{
    CHECK(CoresOf(36, 128) == 4608);
    CHECK(CoresOf(1, 1) == 1);
    CHECK(CoresOf(2, 1) == 2);
    CHECK(CoresOf(1, 2) == 2);
    CHECK(CoresOf(0, 64) == 0);
    CHECK(CoresOf(64, 0) == 0);
    CHECK(CoresOf(-1, 64) == 0);
    CHECK(CoresOf(64, -1) == 0);
    CHECK(CoresOf(-2, -2) == 0);
}

TEST_CASE("Cores and ROPs are taken whatever the call answers")
{
    Simulate(
        MachineWith("ADL2_Adapter_Graphic_Core_Info_Get", Refused({{"iNumCUs", 3}, {"iNumPEsPerCU", 64}, {"iNumROPs", 8}})));
    const ADLWrapper adl;
    CHECK(adl.GetCores(adapter) == 192);
    CHECK(adl.GetRops(adapter) == 8);
}

TEST_CASE("A number of ROPs is 0 unless it is above 0")
{
    struct Case {
        int Given;
        uint32_t Expected;
    };
    for (const auto& [given, expected] : {Case{-1, 0U}, Case{0, 0U}, Case{1, 1U}, Case{2, 2U}, Case{128, 128U}}) {
        CAPTURE(given);
        Simulate(MachineWith("ADL2_Adapter_Graphic_Core_Info_Get", {{"iNumROPs", given}}));
        CHECK(ADLWrapper().GetRops(adapter) == expected);
    }
}

TEST_CASE("CrossFire is supported when the flag is exactly 1, whatever the call answers")
{
    for (const int flag : {-1, 0, 1, 2}) {
        CAPTURE(flag);
        Simulate(MachineWith("ADL2_Adapter_Crossfire_Get", {{"iSupported", flag}}));
        CHECK(ADLWrapper().GetCrossfire(adapter) == (flag == 1));
        Simulate(MachineWith("ADL2_Adapter_Crossfire_Get", Refused({{"iSupported", flag}})));
        CHECK(ADLWrapper().GetCrossfire(adapter) == (flag == 1));
    }
}

TEST_CASE("Bus lanes are taken when ADL reports failure, and are 0 when it reports success")
{
    CHECK(LanesOf({{"iMaximumBusLanes", 16}}) == 0);
    CHECK(LanesOf(Refused({{"iMaximumBusLanes", 16}})) == 16);
    CHECK(LanesOf({{"status", 1}, {"value", {{"iMaximumBusLanes", 8}}}}) == 8); // ADL's success with a warning
    CHECK(LanesOf({{"status", refused}}) == 0);
}

TEST_CASE("A negative number of bus lanes is 0")
{
    CHECK(LanesOf(Refused({{"iMaximumBusLanes", -1}})) == 0);
    CHECK(LanesOf(Refused({{"iMaximumBusLanes", 0}})) == 0);
    CHECK(LanesOf(Refused({{"iMaximumBusLanes", 1}})) == 1);
    CHECK(LanesOf(Refused({{"iMaximumBusLanes", 2}})) == 2);
}

TEST_CASE("An ECC mode that ADL reports successfully gives status 1 for every mode")
{
    for (const int mode : {-1, 0, 1, 2, 3}) {
        CAPTURE(mode);
        CHECK(EccStatusOf(1, Modes(mode)) == 1);
        CHECK(EccStatusOf(5, Modes(mode)) == 1);
    }
}

TEST_CASE("Of a failed ECC mode 0 gives status 1 and 2 gives status 2, any other leaves the supported flag")
{
    CHECK(EccStatusOf(5, Refused(Modes(0))) == 1);
    CHECK(EccStatusOf(5, Refused(Modes(2))) == 2);
    CHECK(EccStatusOf(5, Refused(Modes(1))) == 5);
    CHECK(EccStatusOf(5, Refused(Modes(3))) == 5);
    CHECK(EccStatusOf(5, Refused(Modes(-1))) == 5);
    CHECK(EccStatusOf(5, {{"status", refused}}) == 1); // nothing written: mode 0
    CHECK(EccStatusOf(1, Refused(Modes(1))) == 1);
}

TEST_CASE("Any supported flag but 0 asks for the ECC mode, and the flag is taken whatever its call answers")
{
    for (const int flag : {-1, 1, 2}) {
        CAPTURE(flag);
        CHECK(EccStatusOf(flag, Modes(2)) == 1);
        CHECK(EccStatusOf(Refused(flag), Refused(Modes(2))) == 2);
        CHECK(Only(Trace(), "adl ADL2_Workstation_ECC_Get").size() == 1);
    }
    CHECK(EccStatusOf(Refused(5), Refused(Modes(1))) == 5);
    CHECK(EccStatusOf(0, Modes(2)) == 0);
    CHECK(Only(Trace(), "adl ADL2_Workstation_ECC_Get").empty());
    CHECK(EccStatusOf({{"status", refused}}, Modes(2)) == 0);
    CHECK(Only(Trace(), "adl ADL2_Workstation_ECC_Get").empty());
}

TEST_CASE("ECC error counts are taken when ADL reports failure, each by a call of its own")
{
    for (const int count : {0, 1, 2}) {
        CAPTURE(count);
        Simulate(MachineWith("ADL2_Workstation_ECCData_Get", Refused({{"iSec", count}, {"iDed", 10 + count}})));
        const ADLWrapper adl;
        CHECK(adl.GetEccSingleBitErrors(adapter) == static_cast<uint32_t>(count));
        CHECK(adl.GetEccDoubleBitErrors(adapter) == static_cast<uint32_t>(10 + count));
        CHECK(Only(Trace(), "adl ADL2_Workstation_ECCData_Get 7").size() == 2);
    }
}

TEST_CASE("ECC error counts are 0 when ADL reports success")
{
    Simulate(MachineWith("ADL2_Workstation_ECCData_Get", {{"iSec", 4}, {"iDed", 3}}));
    const ADLWrapper adl;
    CHECK(adl.GetEccSingleBitErrors(adapter) == 0);
    CHECK(adl.GetEccDoubleBitErrors(adapter) == 0);
}
