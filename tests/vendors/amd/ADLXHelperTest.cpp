#include "vendors/amd/ADLXHelper.h"

#include <cstdlib>

#include <doctest/doctest.h>

#include "support/SimulatedRun.h"
#include "vendors/amd/AdlTypes.h"

using namespace orvel::shared::enumeration;
using namespace orvel::tests;

namespace {

void* __stdcall Allocate(int bytes)
{
    return std::malloc(static_cast<size_t>(bytes));
}

void __stdcall Free(void** buffer)
{
    std::free(*buffer);
    *buffer = nullptr;
}

/// A new context of the machine's ADL.
void* NewContext()
{
    const ModuleHandle adl(::LoadLibraryW(L"atiadlxx.dll"));
    const auto create = FindFunction<ADL2_Main_Control_Create_t>(adl.get(), "ADL2_Main_Control_Create");
    void* context = nullptr;
    create(&Allocate, 1, &context, 1);
    return context;
}

ADLX_RESULT InitializeWithAdl(ADLXHelper& helper)
{
    return helper.InitializeWithCallerAdl(NewContext(), &Free);
}

Json MachineWithoutAdlx()
{
    return {{"adl", Json::object()}};
}

Json MachineWith(const Json& adlx)
{
    Json machine = MachineWithoutAdlx();
    machine["adlx"] = adlx;
    return machine;
}

std::vector<std::string> AdlxTrace()
{
    return Only(Trace(), "adlx");
}

/// Whether the library is still loaded after the simulation has released its own reference.
bool IsLibraryLoaded()
{
    Simulate(Json::object());
    return ::GetModuleHandleW(L"amdadlx64.dll") != nullptr;
}

const std::vector<std::string> entryPoints = {
    "ADLXQueryFullVersion", "ADLXQueryVersion", "ADLXInitializeWithCallerAdl", "ADLXInitializeWithIncompatibleDriver",
    "ADLXInitialize",       "ADLXTerminate",
};

} // namespace

TEST_CASE("Without ADLX's library the initialisation fails with 3")
{
    Simulate(MachineWithoutAdlx());
    ADLXHelper helper;
    CHECK(InitializeWithAdl(helper) == 3);
    CHECK(helper.Initialize() == 3);
    CHECK(helper.GetSystemServices() == nullptr);
    CHECK(helper.GetAdlMapping() == nullptr);
}

TEST_CASE("If one of the six entry points is missing, the initialisation fails with 3 before any call of ADLX")
{
    for (const std::string& name : entryPoints) {
        CAPTURE(name);
        Simulate(MachineWith({{"missing", Json::array({name})}}));
        ADLXHelper helper;
        CHECK(InitializeWithAdl(helper) == 3);
        CHECK(helper.Initialize() == 3);
        CHECK(helper.GetSystemServices() == nullptr);
        CHECK(AdlxTrace().empty());
        helper.Terminate();
        CHECK(AdlxTrace().size() == (name == "ADLXTerminate" ? 0 : 1)); // ADLXTerminate is still called if it exists
        CHECK_FALSE(IsLibraryLoaded());
    }
}

TEST_CASE("A library with missing functions stays loaded, and its functions are not looked up again before a termination")
{
    Simulate(MachineWith({{"missing", Json::array({"ADLXInitialize"})}}));
    ADLXHelper helper;
    CHECK(InitializeWithAdl(helper) == 3);
    Simulate(MachineWith(Json::object()));
    CHECK(InitializeWithAdl(helper) == 3);
    helper.Terminate();
    CHECK(InitializeWithAdl(helper) == 0);
}

TEST_CASE("With a null context or callback the initialisation fails with 4 and loads nothing")
{
    Simulate(MachineWith(Json::object()));
    ADLXHelper helper;
    CHECK(helper.InitializeWithCallerAdl(nullptr, &Free) == 4);
    CHECK(helper.InitializeWithCallerAdl(NewContext(), nullptr) == 4);
    CHECK(helper.InitializeWithCallerAdl(nullptr, nullptr) == 4);
    CHECK(AdlxTrace().empty());
    CHECK_FALSE(IsLibraryLoaded());
}

TEST_CASE("Results 0, 1 and 2 are successes, and the interfaces are available")
{
    for (const int result : {0, 1, 2}) {
        CAPTURE(result);
        CHECK(Succeeded(result));
        Simulate(MachineWith({{"ADLXInitializeWithCallerAdl", result}}));
        ADLXHelper helper;
        CHECK(InitializeWithAdl(helper) == result);
        CHECK(helper.GetSystemServices() != nullptr);
        CHECK(helper.GetAdlMapping() != nullptr);
        CHECK(Live()["adlx"] == 1);
        helper.Terminate();
        CHECK(Live()["adlx"] == 0);
    }
}

TEST_CASE("Results above 2 are failures, which are returned unchanged, without interfaces")
{
    for (const int result : {3, 4, 8, 12}) {
        CAPTURE(result);
        CHECK_FALSE(Succeeded(result));
        Simulate(MachineWith({{"ADLXInitializeWithCallerAdl", result}, {"ADLXInitialize", result}}));
        ADLXHelper helper;
        CHECK(InitializeWithAdl(helper) == result);
        CHECK(helper.Initialize() == result);
        CHECK(helper.GetSystemServices() == nullptr);
        CHECK(helper.GetAdlMapping() == nullptr);
        CHECK(Live()["adlx"] == 0);
    }
}

TEST_CASE("The versions are queried before ADLX is initialised")
{
    Simulate(MachineWith(Json::object()));
    ADLXHelper helper;
    CHECK(InitializeWithAdl(helper) == 0);
    CHECK(AdlxTrace() == std::vector<std::string>{"adlx ADLXQueryFullVersion", "adlx ADLXQueryVersion",
                                                  "adlx ADLXInitializeWithCallerAdl"});
}

TEST_CASE("ADLX that is initialised without ADL has a system and no mapping")
{
    for (const int result : {0, 1, 2}) {
        CAPTURE(result);
        Simulate(MachineWith({{"ADLXInitialize", result}}));
        ADLXHelper helper;
        CHECK(helper.Initialize() == result);
        CHECK(helper.GetSystemServices() != nullptr);
        CHECK(helper.GetAdlMapping() == nullptr);
        CHECK(Trace() ==
              std::vector<std::string>{"adlx ADLXQueryFullVersion", "adlx ADLXQueryVersion", "adlx ADLXInitialize"});
    }
}

TEST_CASE("A second initialisation of ADLX returns 2, and one termination ends both")
{
    Simulate(MachineWith(Json::object()));
    ADLXHelper helper;
    CHECK(InitializeWithAdl(helper) == 0);
    CHECK(InitializeWithAdl(helper) == 2);
    CHECK(helper.GetSystemServices() != nullptr);
    CHECK(Live()["adlx"] == 1);
    CHECK(helper.Terminate() == 0);
    CHECK(Live()["adlx"] == 0);
    CHECK_FALSE(IsLibraryLoaded());
}

TEST_CASE("ADLX that other code of the process has initialised can be initialised again")
{
    Simulate(MachineWith(Json::object()));
    ADLXHelper other;
    CHECK(other.Initialize() == 0);
    ADLXHelper helper;
    CHECK(InitializeWithAdl(helper) == 2);
    CHECK(helper.GetSystemServices() != nullptr);
    CHECK(helper.GetAdlMapping() != nullptr);
}

TEST_CASE("The termination clears the interfaces, terminates ADLX and unloads the library")
{
    Simulate(MachineWith(Json::object()));
    ADLXHelper helper;
    CHECK(InitializeWithAdl(helper) == 0);
    CHECK(helper.Terminate() == 0);
    CHECK(helper.GetSystemServices() == nullptr);
    CHECK(helper.GetAdlMapping() == nullptr);
    CHECK(Trace().back() == "adlx ADLXTerminate");
    CHECK(Live()["adlx"] == 0);
    CHECK_FALSE(IsLibraryLoaded());
}

TEST_CASE("The library stays loaded until the termination")
{
    Simulate(MachineWith(Json::object()));
    ADLXHelper helper;
    CHECK(InitializeWithAdl(helper) == 0);
    CHECK(IsLibraryLoaded());
    helper.Terminate();
    CHECK_FALSE(IsLibraryLoaded());
}

TEST_CASE("After a failed initialisation the termination ends ADLX and unloads the library")
{
    Simulate(MachineWith({{"ADLXInitializeWithCallerAdl", 3}}));
    ADLXHelper helper;
    CHECK(InitializeWithAdl(helper) == 3);
    helper.Terminate();
    CHECK(Trace().back() == "adlx ADLXTerminate");
    CHECK_FALSE(IsLibraryLoaded());
}

TEST_CASE("A termination without an initialisation does nothing")
{
    Simulate(MachineWith(Json::object()));
    ADLXHelper helper;
    CHECK(helper.Terminate() == 0);
    CHECK(InitializeWithAdl(helper) == 0);
    CHECK(helper.Terminate() == 0);
    CHECK(helper.Terminate() == 0);
    CHECK(Only(Trace(), "adlx ADLXTerminate").size() == 1);
}

TEST_CASE("After termination ADLX can be initialised again")
{
    Simulate(MachineWith(Json::object()));
    ADLXHelper helper;
    for (int round = 0; round < 3; ++round) {
        CHECK(InitializeWithAdl(helper) == 0);
        CHECK(Live()["adlx"] == 1);
        CHECK(helper.Terminate() == 0);
        CHECK(Live()["adlx"] == 0);
    }
}

TEST_CASE("The destructor of the helper terminates ADLX")
{
    Simulate(MachineWith(Json::object()));
    {
        ADLXHelper helper;
        CHECK(InitializeWithAdl(helper) == 0);
    }
    CHECK(Trace().back() == "adlx ADLXTerminate");
    CHECK_FALSE(IsLibraryLoaded());
}

TEST_CASE("The process has one ADLX helper")
{
    CHECK(&Adlx() == &Adlx());
}
