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

/// A machine whose adapter supports one function.
Json MachineWith(const std::string& function, const Json& answer)
{
    return {{"adl", {{"adapters", {{std::to_string(adapter), {{function, answer}}}}}}}};
}

/// The answer of a call that writes its value and fails.
Json Refused(const Json& value)
{
    return {{"status", refused}, {"value", value}};
}

/// A machine whose adapter supports every function, with values other than the defaults.
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

/// All values that the wrapper reads from an adapter.
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

TEST_CASE("Without ADL's library one line is logged, there is no context, and every property has its default")
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

TEST_CASE("ADL's initialisation is logged as an error line, even if no context was created")
{
    Json machine = TalkativeMachine();
    SUBCASE("a context") {}
    SUBCASE("a failing call")
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

TEST_CASE("A context is used if the call returns one, whatever the call's status")
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

TEST_CASE("Adapters are queried even without a context, and only the function that needs none succeeds")
{
    Json machine = TalkativeMachine();
    machine["adl"]["context"] = false;
    Simulate(machine);
    CHECK(Ask() == Answers{0, 0, false, 16, 0, 0, 0});
    CHECK(Only(Trace(), "adl ADL2_Workstation").size() == 3); // the mode is not queried without ECC
}

TEST_CASE("Destroying a wrapper twice only repeats the log line")
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

TEST_CASE("If ADL2_Main_Control_Destroy is missing, the context stays open, and the wrapper no longer has it")
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

TEST_CASE("An adapter that supports every function has all properties")
{
    Simulate(TalkativeMachine());
    CHECK(Ask() == Answers{});
}

TEST_CASE("If a function is missing, exactly its own properties have their defaults")
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
             Case{"ADL2_Workstation_ECC_Get", {.EccStatus = 5}}, // the supported flag
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

TEST_CASE("An adapter that ADL does not know has the defaults, because unwritten outputs are 0")
{
    Simulate(TalkativeMachine());
    CHECK(Ask(adapter + 1) == none);
    Simulate({{"adl", {{"adapters", {{std::to_string(adapter), Json::object()}}}}}});
    CHECK(Ask() == none);
}

TEST_CASE("The number of cores is compute units times elements, or 0 unless both are above 0")
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

TEST_CASE("Cores and ROPs are used whatever the call's status")
{
    Simulate(
        MachineWith("ADL2_Adapter_Graphic_Core_Info_Get", Refused({{"iNumCUs", 3}, {"iNumPEsPerCU", 64}, {"iNumROPs", 8}})));
    const ADLWrapper adl;
    CHECK(adl.GetCores(adapter) == 192);
    CHECK(adl.GetRops(adapter) == 8);
}

TEST_CASE("The number of ROPs is 0 unless ADL's number is above 0")
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

TEST_CASE("CrossFire is supported if the flag is exactly 1, whatever the call's status")
{
    for (const int flag : {-1, 0, 1, 2}) {
        CAPTURE(flag);
        Simulate(MachineWith("ADL2_Adapter_Crossfire_Get", {{"iSupported", flag}}));
        CHECK(ADLWrapper().GetCrossfire(adapter) == (flag == 1));
        Simulate(MachineWith("ADL2_Adapter_Crossfire_Get", Refused({{"iSupported", flag}})));
        CHECK(ADLWrapper().GetCrossfire(adapter) == (flag == 1));
    }
}

TEST_CASE("The number of bus lanes is used if ADL reports failure, and is 0 if ADL reports success")
{
    CHECK(LanesOf({{"iMaximumBusLanes", 16}}) == 0);
    CHECK(LanesOf(Refused({{"iMaximumBusLanes", 16}})) == 16);
    CHECK(LanesOf({{"status", 1}, {"value", {{"iMaximumBusLanes", 8}}}}) == 8); // 1: success with warnings
    CHECK(LanesOf({{"status", refused}}) == 0);
}

TEST_CASE("A negative number of bus lanes becomes 0")
{
    CHECK(LanesOf(Refused({{"iMaximumBusLanes", -1}})) == 0);
    CHECK(LanesOf(Refused({{"iMaximumBusLanes", 0}})) == 0);
    CHECK(LanesOf(Refused({{"iMaximumBusLanes", 1}})) == 1);
    CHECK(LanesOf(Refused({{"iMaximumBusLanes", 2}})) == 2);
}

TEST_CASE("If ADL reports the ECC mode successfully, the status is 1 for every mode")
{
    for (const int mode : {-1, 0, 1, 2, 3}) {
        CAPTURE(mode);
        CHECK(EccStatusOf(1, Modes(mode)) == 1);
        CHECK(EccStatusOf(5, Modes(mode)) == 1);
    }
}

TEST_CASE(
    "If the call for the ECC mode fails, mode 0 is status 1, mode 2 is status 2, and for others the supported flag is used")
{
    CHECK(EccStatusOf(5, Refused(Modes(0))) == 1);
    CHECK(EccStatusOf(5, Refused(Modes(2))) == 2);
    CHECK(EccStatusOf(5, Refused(Modes(1))) == 5);
    CHECK(EccStatusOf(5, Refused(Modes(3))) == 5);
    CHECK(EccStatusOf(5, Refused(Modes(-1))) == 5);
    CHECK(EccStatusOf(5, {{"status", refused}}) == 1); // an unwritten mode is 0
    CHECK(EccStatusOf(1, Refused(Modes(1))) == 1);
}

TEST_CASE("The ECC mode is queried for any supported flag except 0, whatever the status of the flag's call")
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

TEST_CASE("ECC error counts are used if ADL reports failure, and each has its own call")
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

TEST_CASE("ECC error counts are 0 if ADL reports success")
{
    Simulate(MachineWith("ADL2_Workstation_ECCData_Get", {{"iSec", 4}, {"iDed", 3}}));
    const ADLWrapper adl;
    CHECK(adl.GetEccSingleBitErrors(adapter) == 0);
    CHECK(adl.GetEccDoubleBitErrors(adapter) == 0);
}
