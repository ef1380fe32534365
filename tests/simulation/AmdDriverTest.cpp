// The simulated ADL and ADLX with a caller that breaks their rules, and with a machine file that makes them misbehave.

#include <array>
#include <cstdlib>

#include <doctest/doctest.h>

#include "Drivers.h"

using namespace orvel::tests;

namespace {

constexpr int32_t rubbish = 0x5A5A5A5A;

int allocations = 0;
int releases = 0;

void* Allocate(int32_t bytes)
{
    ++allocations;
    return std::malloc(static_cast<size_t>(bytes));
}

void* AllocateNothing(int32_t)
{
    return nullptr;
}

void Free(void** buffer)
{
    ++releases;
    std::free(*buffer);
    *buffer = nullptr;
}

void FreeAndKeepPointer(void** buffer)
{
    std::free(*buffer);
}

Json MachineWith(const Json& adapter, const Json& adlx = Json::object())
{
    return {{"adl", {{"adapters", {{"0", adapter}}}}}, {"adlx", adlx}};
}

Json OneGpu()
{
    return {{"gpus", Json::array({{{"Name", "Card"}, {"VendorId", nullptr}, {"AdapterIndex", 0}}})}};
}

/// ADL with a context.
class Adl : public Driver {
public:
    Adl() : Driver(L"atiadlxx.dll") { Call("ADL2_Main_Control_Create", &Allocate, 1, &context); }

    void* context = nullptr;
};

/// ADLX on a context of ADL.
class Adlx : public Driver {
public:
    Adlx() : Driver(L"amdadlx64.dll") {}

    int32_t Begin(void* context, void (*release)(void**) = &Free)
    {
        return Call("ADLXInitializeWithCallerAdl", uint64_t{0x0001000200000048}, &system, &mapping, context, release);
    }

    void* FirstGpu() const
    {
        void* list = nullptr;
        CallSlot(system, 1, &list);
        void* gpu = nullptr;
        CallSlot(list, 11, 0U, &gpu);
        CallSlot(list, 1);
        return gpu;
    }

    void* system = nullptr;
    void* mapping = nullptr;
};

} // namespace

TEST_CASE("ADL2 functions need a valid context")
{
    Simulate(MachineWith({{"ADL2_Workstation_ECC_Caps", 1}}));
    const Adl adl;
    int32_t supported = 0;
    CHECK(adl.Call("ADL2_Workstation_ECC_Caps", adl.context, 0, &supported) == 0);
    CHECK(adl.Call("ADL2_Main_Control_Destroy", adl.context) == 0);
    CHECK(TakeViolations().empty());
    CHECK(adl.Call("ADL2_Workstation_ECC_Caps", adl.context, 0, &supported) == -2);
    CHECK(adl.Call("ADL2_Main_Control_Destroy", adl.context) == -1);
    CHECK(TakeViolations() == Violations{"adl ADL2_Workstation_ECC_Caps 0: the context is not alive",
                                         "adl ADL2_Main_Control_Destroy: the context is not alive"});
}

TEST_CASE("ADL reports a null pointer, a missing callback, a wrong size and reserved numbers")
{
    Simulate(MachineWith({{"ADL2_Workstation_ECC_Caps", 1},
                          {"ADL2_Adapter_Graphic_Core_Info_Get", {{"iNumCUs", 1}}},
                          {"ADL2_Adapter_Crossfire_Get", {{"iSupported", 1}}},
                          {"ADL_Overdrive5_CurrentActivity_Get", {{"iMaximumBusLanes", 16}}}}));
    const Adl adl;
    void* context = nullptr;
    CHECK(adl.Call("ADL2_Main_Control_Create", nullptr, 1, &context) == -11);
    CHECK(adl.Call("ADL2_Workstation_ECC_Caps", adl.context, 0, nullptr) == -9);
    std::array<int32_t, 16> core{};
    core[15] = 1;
    CHECK(adl.Call("ADL2_Adapter_Graphic_Core_Info_Get", adl.context, 0, core.data()) == 0);
    std::array<int32_t, 4> combination{1};
    std::array<int32_t, 3> crossfire{};
    CHECK(adl.Call("ADL2_Adapter_Crossfire_Get", adl.context, 0, combination.data(), crossfire.data()) == 0);
    std::array<int32_t, 10> activity{39};
    CHECK(adl.Call("ADL_Overdrive5_CurrentActivity_Get", 0, activity.data()) == -3);
    CHECK(TakeViolations() == Violations{"adl ADL2_Main_Control_Create: no callback for memory",
                                         "adl ADL2_Workstation_ECC_Caps 0: a null pointer",
                                         "adl ADL2_Adapter_Graphic_Core_Info_Get 0: reserved numbers are not 0",
                                         "adl ADL2_Adapter_Crossfire_Get 0: the combination is not empty",
                                         "adl ADL_Overdrive5_CurrentActivity_Get 0: the structure's size is wrong"});
}

TEST_CASE("ADL writes complete structures; the activity keeps its size")
{
    Simulate(MachineWith({{"ADL2_Adapter_Graphic_Core_Info_Get", {{"iNumCUs", 36}, {"iNumPEsPerCU", 128}, {"iNumROPs", 96}}},
                          {"ADL_Overdrive5_CurrentActivity_Get", {{"status", -1}, {"value", {{"iMaximumBusLanes", 16}}}}}}));
    const Adl adl;
    std::array<int32_t, 16> core{};
    CHECK(adl.Call("ADL2_Adapter_Graphic_Core_Info_Get", adl.context, 0, core.data()) == 0);
    std::array<int32_t, 16> expected;
    expected.fill(rubbish);
    expected[1] = 36;
    expected[2] = 128;
    expected[4] = 96;
    CHECK(core == expected);
    std::array<int32_t, 10> activity{40};
    CHECK(adl.Call("ADL_Overdrive5_CurrentActivity_Get", 0, activity.data()) == -1);
    CHECK(activity[0] == 40);
    CHECK(activity[7] == rubbish);
    CHECK(activity[8] == 16);
}

TEST_CASE("ADL only knows the adapters in the file")
{
    Simulate(MachineWith({{"ADL2_Workstation_ECC_Caps", 1}}));
    const Adl adl;
    int32_t supported = 7;
    CHECK(adl.Call("ADL2_Workstation_ECC_Caps", adl.context, 1, &supported) == -5);
    CHECK(supported == 7);
    CHECK(adl.Call("ADL2_Workstation_ECC_Caps", nullptr, 0, &supported) == -2); // a null context is that of ADL1
    CHECK(TakeViolations().empty());
}

TEST_CASE("ADL returns a context with any status, unless the file withholds it")
{
    const auto create = [](const Json& adl) {
        Simulate({{"adl", adl}});
        const Driver driver(L"atiadlxx.dll");
        void* context = &context;
        const int32_t status = driver.Call("ADL2_Main_Control_Create", &Allocate, 1, &context);
        return std::pair(status, context != nullptr);
    };
    CHECK(create({{"ADL2_Main_Control_Create", -1}}) == std::pair(-1, true));
    CHECK(create({{"context", false}}) == std::pair(0, false));
    Simulate({{"adl", Json::object()}});
    CHECK(Driver(L"atiadlxx.dll").Call("ADL2_Main_Control_Create", &Allocate, 1, nullptr) == -9);
    CHECK(TakeViolations() == Violations{"adl ADL2_Main_Control_Create: a null pointer"});
}

TEST_CASE("Functions of ADL1 that a file omits return -2, those of ADL2 -8")
{
    Simulate(MachineWith(Json::object()));
    const Adl adl;
    std::array<int32_t, 10> activity{40};
    int32_t number = 0;
    CHECK(adl.Call("ADL_Overdrive5_CurrentActivity_Get", 0, activity.data()) == -2);
    CHECK(adl.Call("ADL_Adapter_ObservedClockInfo_Get", 0, &number, &number) == -2);
    CHECK(adl.Call("ADL2_Workstation_ECC_Caps", adl.context, 0, &number) == -8);
}

TEST_CASE("A failing ADL call can write garbage")
{
    Simulate(MachineWith({{"ADL2_Workstation_ECCData_Get", {{"status", -1}, {"writes", "rubbish"}}}}));
    const Adl adl;
    std::array<int32_t, 2> errors{};
    CHECK(adl.Call("ADL2_Workstation_ECCData_Get", adl.context, 0, errors.data()) == -1);
    CHECK(errors == std::array<int32_t, 2>{rubbish, rubbish});
}

TEST_CASE("ADLX needs a valid ADL context, and uses the caller's memory through both callbacks")
{
    Simulate(MachineWith(Json::object()));
    const Adl adl;
    Adlx adlx;
    int notAContext = 0;
    CHECK(adlx.Begin(&notAContext) == 8);
    CHECK(TakeViolations() == Violations{"adlx ADLXInitializeWithCallerAdl: the ADL context is not alive"});
    allocations = 0;
    releases = 0;
    CHECK(adlx.Begin(adl.context) == 0);
    CHECK(allocations == 1);
    CHECK(releases == 1);
    CHECK(adlx.Call("ADLXTerminate") == 0);
    CHECK(TakeViolations().empty());
    CHECK(adlx.Begin(adl.context, &FreeAndKeepPointer) == 0);
    CHECK(TakeViolations() ==
          Violations{"adlx ADLXInitializeWithCallerAdl: the callback for freed memory left the pointer to it"});
}

TEST_CASE("ADLX rejects null, another version and calls outside a session")
{
    Simulate(MachineWith(Json::object()));
    const Adl adl;
    Adlx adlx;
    constexpr uint64_t version = 0x0001000200000048;
    CHECK(adlx.Call("ADLXTerminate") == 7);
    CHECK(adlx.Call("ADLXQueryFullVersion", nullptr) == 4);
    CHECK(adlx.Call("ADLXInitialize", version, nullptr) == 4);
    CHECK(adlx.Call("ADLXInitialize", version + 1, &adlx.system) == 5);
    CHECK(adlx.Call("ADLXInitializeWithCallerAdl", version + 1, &adlx.system, &adlx.mapping, adl.context, &Free) == 5);
    CHECK(TakeViolations().empty());
    CHECK(adlx.Call("ADLXInitializeWithCallerAdl", version, &adlx.system, nullptr, adl.context, &Free) == 4);
    CHECK(adlx.Begin(nullptr) == 4);
    CHECK(TakeViolations() == Violations(2, "adlx ADLXInitializeWithCallerAdl: a null pointer"));
}

TEST_CASE("A second initialisation of ADLX succeeds with 2, and one termination ends both")
{
    Simulate(MachineWith(Json::object()));
    const Adl adl;
    Adlx adlx;
    CHECK(adlx.Begin(adl.context) == 0);
    void* const system = adlx.system;
    CHECK(adlx.Begin(adl.context) == 2);
    CHECK(adlx.system == system);
    CHECK(Live()["adlx"] == 1);
    CHECK(adlx.Call("ADLXTerminate") == 0);
    CHECK(adlx.Call("ADLXTerminate") == 7);
}

TEST_CASE("An ADLX object reports a null pointer")
{
    Simulate(MachineWith(Json::object(), OneGpu()));
    const Adl adl;
    Adlx adlx;
    adlx.Begin(adl.context);
    void* const gpu = adlx.FirstGpu();
    CHECK(CallSlot(adlx.system, 1, static_cast<void*>(nullptr)) == 4);
    CHECK(CallSlot(gpu, 7, static_cast<void*>(nullptr)) == 4);
    CHECK(CallSlot(gpu, 11, static_cast<void*>(nullptr)) == 4);
    CHECK(CallSlot(adlx.mapping, 3, gpu, static_cast<void*>(nullptr)) == 4);
    CHECK(TakeViolations() == Violations{"adlx GetGPUs: a null pointer", "adlx Name: a null pointer",
                                         "adlx TotalVRAM: a null pointer",
                                         "adlx AdlAdapterIndexFromADLXGPU: a null pointer"});
    CallSlot(gpu, 1);
}

TEST_CASE("An ADLX list returns null after its last GPU")
{
    Simulate(MachineWith(Json::object(), OneGpu()));
    const Adl adl;
    Adlx adlx;
    adlx.Begin(adl.context);
    void* list = nullptr;
    CHECK(CallSlot(adlx.system, 1, &list) == 0);
    CHECK(CallSlot<uint32_t>(list, 3) == 1);
    void* gpu = list;
    CHECK(CallSlot(list, 11, 1U, &gpu) == 4);
    CHECK_FALSE(gpu);
    CHECK(TakeViolations().empty());
    CallSlot(list, 1);
}

TEST_CASE("ADLX does not start if the caller's allocation fails")
{
    Simulate(MachineWith(Json::object()));
    const Driver adl(L"atiadlxx.dll");
    void* context = nullptr;
    adl.Call("ADL2_Main_Control_Create", &AllocateNothing, 1, &context);
    Adlx adlx;
    CHECK(adlx.Begin(context) == 8);
}

TEST_CASE("ADLX on a context that has been destroyed is a violation")
{
    Simulate(MachineWith(Json::object(), OneGpu()));
    const Adl adl;
    Adlx adlx;
    adlx.Begin(adl.context);
    adl.Call("ADL2_Main_Control_Destroy", adl.context);
    void* list = nullptr;
    CallSlot(adlx.system, 1, &list);
    CHECK(TakeViolations() == Violations{"adlx GetGPUs: the ADL context of the session is not alive"});
    CallSlot(list, 1);
}

TEST_CASE("An ADLX object and its texts are invalid after its last release")
{
    Simulate(MachineWith(Json::object(), OneGpu()));
    const Adl adl;
    Adlx adlx;
    adlx.Begin(adl.context);
    void* const gpu = adlx.FirstGpu();
    const char* name = nullptr;
    CHECK(CallSlot(gpu, 7, &name) == 0);
    CHECK(std::string(name) == "Card");
    CHECK(CallSlot(gpu, 1) == 0);
    CHECK(TakeViolations().empty());
    CHECK(std::string(name) == "ZZZZ");
    CHECK(CallSlot(gpu, 7, &name) == 7);
    CallSlot(gpu, 1);
    int32_t index = 0;
    CHECK(CallSlot(adlx.mapping, 3, gpu, &index) == 4);
    CHECK(TakeViolations() == Violations{"adlx IADLXGPU: a call on an object that is not alive",
                                         "adlx IADLXGPU: a call on an object that is not alive",
                                         "adlx AdlAdapterIndexFromADLXGPU: the GPU is not alive"});
    void* const again = adlx.FirstGpu();
    CHECK(again != gpu);
    CallSlot(again, 1);
}

TEST_CASE("ADLX objects become invalid when ADLX terminates")
{
    Simulate(MachineWith(Json::object(), OneGpu()));
    const Adl adl;
    Adlx adlx;
    adlx.Begin(adl.context);
    void* const gpu = adlx.FirstGpu();
    CHECK(adlx.Call("ADLXTerminate") == 11);
    CHECK(TakeViolations() == Violations{"adlx ADLXTerminate: objects are still held: IADLXGPU"});
    CallSlot(gpu, 1);
    void* list = nullptr;
    CHECK(CallSlot(adlx.system, 1, &list) == 7);
    CHECK(TakeViolations() == Violations{"adlx IADLXGPU: a call on an object that is not alive",
                                         "adlx IADLXSystem: a call on an object that is not alive"});
    CHECK(Live()["adlx"] == 0);
}

TEST_CASE("An ADLX text can be null with success")
{
    Simulate(MachineWith(Json::object(), OneGpu()));
    const Adl adl;
    Adlx adlx;
    adlx.Begin(adl.context);
    void* const gpu = adlx.FirstGpu();
    const char* vendor = "";
    CHECK(CallSlot(gpu, 3, &vendor) == 0);
    CHECK(vendor == nullptr);
    CallSlot(gpu, 1);
}

TEST_CASE("A failing ADLX call can write a dangling pointer, and a successful one nothing")
{
    Json failing = OneGpu();
    failing["GetGPUs"] = {{"status", 3}, {"writes", "rubbish"}};
    Simulate(MachineWith(Json::object(), failing));
    const Adl adl;
    Adlx adlx;
    adlx.Begin(adl.context);
    void* list = nullptr;
    CHECK(CallSlot(adlx.system, 1, &list) == 3);
    REQUIRE(list);
    CallSlot(list, 1);
    CHECK(TakeViolations() == Violations{"adlx GetGPUs wrote rubbish: a call on an object that is not alive"});
    failing["GetGPUs"] = {{"status", 0}, {"writes", "nothing"}};
    Simulate(MachineWith(Json::object(), failing));
    adlx.Begin(adl.context);
    list = &failing;
    CHECK(CallSlot(adlx.system, 1, &list) == 0);
    CHECK(list == &failing);
}
