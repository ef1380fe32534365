#include "../Print.h"

#include <cstring>
#include <cwchar>
#include <map>
#include <set>
#include <string>

#include "interfaces/AdlxInterfaces.h"
#include "sources/Adlx.h"

namespace orvel::shared::inventory {

namespace {

using namespace enumeration;
using P = Property;
using Result = ADLX_RESULT;

constexpr uint64_t gibibyte = 1 << 30;

/// ADLX as a driver of today has it, with two equal Radeons on buses 3 and 4, the second of which is integrated.
struct Driver {
    std::map<std::string, Result> results; ///< of the calls that do not return ADLX_OK; such calls write nothing
    std::set<std::string> missing;         ///< exports
    std::set<std::string> unwritten;       ///< calls that succeed without writing anything
    uint64_t version = 0x000100040000006E;
    int32_t type = 2;
    const char* memoryType = "GDDR6";
    const char* revision = "C1";
    uint32_t listed = 2;
    bool hasSecondInterface = true;
    uint32_t luid = 7; ///< of the first GPU
    int sessions = 0;
    int references = 0; ///< of lists and GPUs
    uint64_t callersVersion = 0;
    void* callersAdl = nullptr;
};
Driver driver;

template <typename Write>
Result Answered(const char* call, Write write)
{
    CHECK(driver.sessions == 1);
    if (const auto result = driver.results.find(call); result != driver.results.end()) {
        return result->second;
    }
    if (!driver.unwritten.contains(call)) {
        write();
    }
    return ADLX_OK;
}

/// A slot that the library must not call.
Result Unused()
{
    FAIL_CHECK("a slot was called that the inventory has no use for");
    return ADLX_FAIL;
}

long Acquire()
{
    return ++driver.references;
}

long Release()
{
    CHECK(driver.sessions == 1);
    return --driver.references;
}

/// Returns an object with a reference for the caller.
template <typename Interface>
auto Give(Interface** received, Interface& object)
{
    return [received, &object] {
        Acquire();
        *received = &object;
    };
}

class Gpu final : public IADLXGPU2 {
public:
    explicit Gpu(uint32_t number) : number(number) {}

    long __stdcall Acquire() override { return inventory::Acquire(); }
    long __stdcall Release() override { return inventory::Release(); }
    Result __stdcall QueryInterface(const wchar_t* id, void** object) override
    {
        CHECK(std::wcscmp(id, L"IADLXGPU2") == 0);
        if (!driver.hasSecondInterface) {
            return ADLX_NOT_SUPPORTED;
        }
        return Answered("QueryInterface", Give(reinterpret_cast<Gpu**>(object), *this));
    }
    Result __stdcall VendorId(const char** text) override { return Text("VendorId", text, "1002"); }
    Result __stdcall Type(int32_t* type) override
    {
        return Answered("Type", [&] { *type = number == 1 ? driver.type : 1; });
    }
    Result __stdcall TotalVRAM(uint32_t* mebibytes) override
    {
        return Answered("TotalVRAM", [&] { *mebibytes = number * 16'384; });
    }
    Result __stdcall VRAMType(const char** text) override { return Text("VRAMType", text, driver.memoryType); }
    Result __stdcall DeviceId(const char** text) override { return Text("DeviceId", text, "73BF"); }
    Result __stdcall RevisionId(const char** text) override { return Text("RevisionId", text, driver.revision); }
    Result __stdcall SubSystemId(const char** text) override { return Text("SubSystemId", text, "0E3A"); }
    Result __stdcall SubSystemVendorId(const char** text) override { return Text("SubSystemVendorId", text, "1DA2"); }
    Result __stdcall LUID(ADLX_LUID* luid) override
    {
        return Answered("LUID", [&] { *luid = {number == 1 ? driver.luid : 8, 0}; });
    }

    Result __stdcall ASICFamilyType(int32_t*) override { return Unused(); }
    Result __stdcall IsExternal(bool*) override { return Unused(); }
    Result __stdcall Name(const char**) override { return Unused(); }
    Result __stdcall DriverPath(const char**) override { return Unused(); }
    Result __stdcall PNPString(const char**) override { return Unused(); }
    Result __stdcall HasDesktops(bool*) override { return Unused(); }
    Result __stdcall BIOSInfo(const char**, const char**, const char**) override { return Unused(); }
    Result __stdcall UniqueId(int32_t*) override { return Unused(); }
    Result __stdcall PCIBusType(int32_t*) override { return Unused(); }
    Result __stdcall PCIBusLaneWidth(uint32_t*) override { return Unused(); }
    Result __stdcall MultiGPUMode(int32_t*) override { return Unused(); }
    Result __stdcall ProductName(const char**) override { return Unused(); }
    Result __stdcall IsPowerOff(bool*) override { return Unused(); }
    Result __stdcall PowerOn() override { return Unused(); }
    Result __stdcall StartPowerOff() override { return Unused(); }
    Result __stdcall AbortPowerOff() override { return Unused(); }
    Result __stdcall IsSupportedApplicationList(bool*) override { return Unused(); }
    Result __stdcall GetApplications() override { return Unused(); }
    Result __stdcall AMDSoftwareReleaseDate(uint32_t*, uint32_t*, uint32_t*) override { return Unused(); }
    Result __stdcall AMDSoftwareEdition(const char**) override { return Unused(); }
    Result __stdcall AMDSoftwareVersion(const char**) override { return Unused(); }
    Result __stdcall DriverVersion(const char**) override { return Unused(); }
    Result __stdcall AMDWindowsDriverVersion(const char**) override { return Unused(); }

    const uint32_t number; ///< from 1

private:
    static Result Text(const char* call, const char** text, const char* answer)
    {
        return Answered(call, [&] { *text = answer; });
    }
};
Gpu gpus[] = {Gpu(1), Gpu(2)};

class GpuList final : public IADLXGPUList {
public:
    long __stdcall Acquire() override { return inventory::Acquire(); }
    long __stdcall Release() override { return inventory::Release(); }
    uint32_t __stdcall Size() override { return driver.listed; }
    Result __stdcall At_GPUList(uint32_t index, IADLXGPU** gpu) override
    {
        REQUIRE(index < 2);
        const auto call = "At_GPUList " + std::to_string(index);
        return Answered(call.c_str(), Give<IADLXGPU>(gpu, gpus[index]));
    }

    Result __stdcall QueryInterface(const wchar_t*, void**) override { return Unused(); }
    bool __stdcall Empty() override { return Unused() == ADLX_OK; }
    uint32_t __stdcall Begin() override { return static_cast<uint32_t>(Unused()); }
    uint32_t __stdcall End() override { return static_cast<uint32_t>(Unused()); }
    Result __stdcall At(uint32_t, IADLXInterface**) override { return Unused(); }
    Result __stdcall Clear() override { return Unused(); }
    Result __stdcall Remove_Back() override { return Unused(); }
    Result __stdcall Add_Back(IADLXInterface*) override { return Unused(); }
};
GpuList list;

class System final : public IADLXSystem {
public:
    Result __stdcall GetGPUs(IADLXGPUList** received) override
    {
        return Answered("GetGPUs", Give<IADLXGPUList>(received, list));
    }

    Result __stdcall HybridGraphicsType(int32_t*) override { return Unused(); }
    Result __stdcall QueryInterface(const wchar_t*, void**) override { return Unused(); }
    Result __stdcall GetDisplaysServices(void**) override { return Unused(); }
    Result __stdcall GetDesktopsServices(void**) override { return Unused(); }
    Result __stdcall GetGPUsChangedHandling(void**) override { return Unused(); }
    Result __stdcall EnableLog(int32_t, int32_t, void*, const wchar_t*) override { return Unused(); }
    Result __stdcall Get3DSettingsServices(void**) override { return Unused(); }
    Result __stdcall GetGPUTuningServices(void**) override { return Unused(); }
    Result __stdcall GetPerformanceMonitoringServices(IADLXPerformanceMonitoringServices**) override { return Unused(); }
};
System driverSystem;

class Mapping final : public IADLMapping {
public:
    Result __stdcall BdfFromADLXGPU(IADLXGPU* gpu, int32_t* bus, int32_t* device, int32_t* function) override
    {
        return Answered("BdfFromADLXGPU", [&] {
            *bus = gpu == &gpus[0] ? 3 : 4;
            *device = 0;
            *function = 0;
        });
    }

    Result __stdcall GetADLXGPUFromBdf(int32_t, int32_t, int32_t, IADLXGPU**) override { return Unused(); }
    Result __stdcall GetADLXGPUFromAdlAdapterIndex(int32_t, IADLXGPU**) override { return Unused(); }
    Result __stdcall AdlAdapterIndexFromADLXGPU(IADLXGPU*, int32_t*) override { return Unused(); }
};
Mapping mapping;

Result QueryFullVersion(uint64_t* version)
{
    if (const auto result = driver.results.find("ADLXQueryFullVersion"); result != driver.results.end()) {
        return result->second;
    }
    *version = driver.version;
    return ADLX_OK;
}

Result Begin(const char* call, uint64_t version, IADLXSystem** received)
{
    driver.callersVersion = version;
    const auto result = driver.results.find(call);
    if (result != driver.results.end() && result->second != ADLX_ALREADY_ENABLED) {
        return result->second;
    }
    ++driver.sessions;
    *received = driver.unwritten.contains(call) ? nullptr : &driverSystem;
    return result == driver.results.end() ? ADLX_OK : result->second;
}

Result InitializeAlone(uint64_t version, IADLXSystem** received)
{
    return Begin("ADLXInitialize", version, received);
}

Result InitializeWithCallerAdl(uint64_t version, IADLXSystem** received, IADLMapping** mapped, void* context,
                               void(__stdcall* release)(void**))
{
    driver.callersAdl = context;
    const bool canRelease = release != nullptr;
    CHECK(canRelease);
    *mapped = &mapping; // also where the initialisation fails
    return Begin("ADLXInitializeWithCallerAdl", version, received);
}

Result Terminate()
{
    CHECK(driver.sessions == 1);
    if (const auto result = driver.results.find("ADLXTerminate"); result != driver.results.end()) {
        return result->second;
    }
    --driver.sessions;
    return ADLX_OK;
}

template <typename Function>
void* Pointer(Function* function)
{
    return reinterpret_cast<void*>(function);
}

void* Find(const char* name)
{
    static const std::map<std::string, void*> exports = {
        {"ADLXQueryFullVersion", Pointer(&QueryFullVersion)},
        {"ADLXInitialize", Pointer(&InitializeAlone)},
        {"ADLXInitializeWithCallerAdl", Pointer(&InitializeWithCallerAdl)},
        {"ADLXTerminate", Pointer(&Terminate)},
    };
    return driver.missing.contains(name) ? nullptr : exports.at(name);
}

int adl = 0; ///< serves as a context of AMD's Display Library

/// Reads with the driver as it is, and checks that nothing is left of it.
DriverReading Read(void* adlContext = &adl)
{
    bool isStopped = false;
    auto reading = ReadAdlx(&Find, adlContext, isStopped);
    CHECK(isStopped == (driver.sessions == 0));
    CHECK(driver.references == 0);
    return reading;
}

} // namespace

TEST_CASE("ADLX's values are read from every GPU, with its LUID and its place")
{
    driver = {};
    const auto reading = Read();
    CHECK(reading.end == Known(true));
    REQUIRE(reading.devices.size() == 2);
    const auto& first = reading.devices[0];
    CHECK(first.luid == 7);
    CHECK_FALSE(first.address.segment);
    CHECK(first.address.bus == 3);
    CHECK(first.address.device == 0);
    CHECK(first.address.function == 0);
    CHECK(first.vendorId == 0x1002);
    CHECK(first.deviceId == 0x73BF);
    CHECK(first.subsystemId == 0x0E3A1DA2);
    CHECK(first.revision == 0xC1);
    const std::map<Property, Answer> expected = {
        {P::Integrated, Known(false)},
        {P::BoardMemoryBytes, Known(16 * gibibyte)},
        {P::MemoryType, Known("GDDR6")},
    };
    CHECK(first.answers == expected);
    const auto& second = reading.devices[1];
    CHECK(second.luid == 8);
    CHECK(second.address.bus == 4);
    CHECK(second.answers.at(P::Integrated) == Known(true));
    CHECK(second.answers.at(P::BoardMemoryBytes) == Known(32 * gibibyte));
    CHECK(driver.callersAdl == &adl);
}

TEST_CASE("ADLX's refusals are statuses of the values alone")
{
    const std::map<std::string, Property> propertyOf = {
        {"Type", P::Integrated}, {"TotalVRAM", P::BoardMemoryBytes}, {"VRAMType", P::MemoryType}};
    driver = {};
    const auto healthy = Read();
    for (const auto& [call, property] : propertyOf) {
        CAPTURE(call);
        for (const auto& [result, expected] :
             {std::pair{ADLX_NOT_SUPPORTED, Unsupported(Reason::NotSupported)}, {ADLX_FAIL, Failed(3)}, {-1, Failed(-1)}}) {
            driver = {};
            driver.results[call] = result;
            auto answers = healthy.devices[0].answers;
            answers[property] = expected;
            const auto reading = Read();
            CHECK(reading.end == Known(true));
            CHECK(reading.devices.at(0).answers == answers);
        }
    }
}

TEST_CASE("ADLX's results for \"already enabled\" and \"already initialised\" are successes of a value")
{
    for (const auto result : {ADLX_ALREADY_ENABLED, ADLX_ALREADY_INITIALIZED}) {
        driver = {};
        driver.results["TotalVRAM"] = result; // which writes nothing here
        CHECK(Read().devices.at(0).answers.at(P::BoardMemoryBytes) == Known(uint64_t{0}));
    }
}

TEST_CASE("Texts and types that ADLX does not write are missing, unknown ones are unusable")
{
    driver = {};
    driver.unwritten = {"Type", "VRAMType"};
    auto answers = Read().devices.at(0).answers;
    CHECK(answers.at(P::Integrated) == Unavailable(Reason::Missing));
    CHECK(answers.at(P::MemoryType) == Unavailable(Reason::Missing));
    driver = {};
    driver.type = 3;
    driver.memoryType = "GDDR\x1F";
    answers = Read().devices.at(0).answers;
    CHECK(answers.at(P::Integrated) == Unavailable(Reason::Unusable));
    CHECK(answers.at(P::MemoryType) == Unavailable(Reason::Unusable));
    const std::string endless(256, 'G');
    driver.memoryType = endless.c_str();
    CHECK(Read().devices.at(0).answers.at(P::MemoryType) == Unavailable(Reason::Unusable));
}

TEST_CASE("Identifiers that are no hexadecimal numbers identify nothing")
{
    for (const char* const text : {"", "C1h", "0x", "100000000"}) {
        CAPTURE(std::string(text));
        driver = {};
        driver.revision = text;
        CHECK_FALSE(Read().devices.at(0).revision);
    }
    driver = {};
    driver.results["SubSystemVendorId"] = ADLX_FAIL;
    CHECK_FALSE(Read().devices.at(0).subsystemId);
}

TEST_CASE("A driver before ADLX 1.4 has no LUIDs")
{
    driver = {};
    driver.hasSecondInterface = false;
    CHECK_FALSE(Read().devices.at(0).luid);
    driver = {};
    driver.results["LUID"] = ADLX_NOT_SUPPORTED;
    CHECK_FALSE(Read().devices.at(0).luid);
    driver = {};
    driver.luid = 0;
    CHECK_FALSE(Read().devices.at(0).luid);
    CHECK(Read().devices.at(1).luid == 8);
}

TEST_CASE("Without an ADL context, or where ADLX refuses it, the GPUs have no place")
{
    driver = {};
    CHECK_FALSE(Read(nullptr).devices.at(0).address.bus);
    CHECK(driver.callersAdl == nullptr);
    driver = {};
    driver.results["ADLXInitializeWithCallerAdl"] = ADLX_FAIL;
    auto reading = Read();
    CHECK(reading.end == Known(true));
    CHECK(reading.devices.size() == 2);
    CHECK_FALSE(reading.devices.at(0).address.bus);
    driver = {};
    driver.missing = {"ADLXInitializeWithCallerAdl"};
    CHECK_FALSE(Read().devices.at(0).address.bus);
    driver = {};
    driver.results["BdfFromADLXGPU"] = ADLX_FAIL;
    CHECK_FALSE(Read().devices.at(0).address.bus);
    driver = {};
    driver.unwritten = {"BdfFromADLXGPU"};
    CHECK_FALSE(Read().devices.at(0).address.bus);
}

TEST_CASE("ADLX is asked for the driver's version where that is older, and for 1.4 otherwise")
{
    constexpr uint64_t newest = 0x000100040000006E;
    struct Case {
        uint64_t drivers, callers;
    };
    for (const auto& [drivers, callers] :
         {Case{0x0001000000000001, 0x0001000000000001}, Case{0x0001000500000000, newest}, Case{0, newest}}) {
        driver = {};
        driver.version = drivers;
        Read();
        CHECK(driver.callersVersion == callers);
    }
    driver = {};
    driver.results["ADLXQueryFullVersion"] = ADLX_FAIL;
    Read();
    CHECK(driver.callersVersion == newest);
    driver = {};
    driver.missing = {"ADLXQueryFullVersion"};
    Read();
    CHECK(driver.callersVersion == newest);
}

TEST_CASE("A refused list has failed; one GPU that is not returned leaves the other")
{
    driver = {};
    driver.results["GetGPUs"] = ADLX_FAIL;
    auto reading = Read();
    CHECK(reading.end == Failed(3));
    CHECK(reading.devices.empty());
    driver = {};
    driver.results["At_GPUList 0"] = ADLX_INVALID_ARGS;
    reading = Read();
    CHECK(reading.end == Failed(4));
    REQUIRE(reading.devices.size() == 1);
    CHECK(reading.devices[0].luid == 8);
}

TEST_CASE("A list of more than 256 GPUs is not read")
{
    driver = {};
    driver.listed = 257;
    const auto reading = Read();
    CHECK(reading.end == Unavailable(Reason::Unusable));
    CHECK(reading.devices.empty());
}

TEST_CASE("ADLX that does not start has failed, or is not present where it lacks a function")
{
    driver = {};
    driver.results = {{"ADLXInitializeWithCallerAdl", ADLX_FAIL}, {"ADLXInitialize", ADLX_INVALID_ARGS}};
    CHECK(Read().end == Failed(4));
    driver = {};
    driver.missing = {"ADLXInitializeWithCallerAdl", "ADLXInitialize"};
    CHECK(Read().end == Unavailable(Reason::NotPresent));
    driver = {};
    driver.missing = {"ADLXTerminate"};
    CHECK(Read().end == Unavailable(Reason::NotPresent));
    driver = {};
    driver.unwritten = {"ADLXInitializeWithCallerAdl"};
    CHECK(Read().end == Unavailable(Reason::Unusable));
}

TEST_CASE("ADLX that somebody else has initialised is left alone")
{
    driver = {};
    driver.results = {{"ADLXInitializeWithCallerAdl", ADLX_ALREADY_INITIALIZED},
                      {"ADLXInitialize", ADLX_ALREADY_INITIALIZED}};
    const auto reading = Read(); // Terminate checks that there is a session of ours
    CHECK(reading.end == Failed(2));
    CHECK(reading.devices.empty());
}

TEST_CASE("ADLX that does not stop may still run")
{
    driver = {};
    driver.results["ADLXTerminate"] = ADLX_FAIL;
    CHECK(Read().devices.size() == 2); // checks that it says so
    CHECK(driver.sessions == 1);
}

} // namespace orvel::shared::inventory
