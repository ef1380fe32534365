#include "../Print.h"

#include <cstring>
#include <map>
#include <set>
#include <vector>

#include "interfaces/NvapiTypes.h"
#include "sources/Nvapi.h"

namespace orvel::shared::inventory {

namespace {

using P = Property;
using enum enumeration::NvapiId;
using Id = enumeration::NvapiId;
using Handle = enumeration::NvPhysicalGpuHandle;

/// NVAPI as a driver of today has it: GPU 1 is for displays, GPU 2 is integrated and only computes.
struct Driver {
    std::map<Id, int32_t> statuses; ///< of the calls that are refused
    std::set<Id> missing;
    std::set<Id> unwritten; ///< calls that succeed without writing anything
    int sessions = 0;
    uint32_t displayGpus = 1;
    uint32_t linkedGpus = 1;
    uint32_t gpuType = 2;
    uint32_t presentClocks = 1;
};
Driver driver;

uint32_t NumberOf(Handle gpu)
{
    return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(gpu)) & 0xF;
}

int32_t Answered(Id id, const auto& write)
{
    if (driver.sessions == 0 && id != NvAPI_Initialize) {
        return -4;
    }
    if (const auto status = driver.statuses.find(id); status != driver.statuses.end()) {
        return status->second;
    }
    if (!driver.unwritten.contains(id)) {
        write();
    }
    return 0;
}

int32_t Initialize()
{
    return Answered(NvAPI_Initialize, [] { ++driver.sessions; });
}

int32_t Unload()
{
    return Answered(NvAPI_Unload, [] { --driver.sessions; });
}

int32_t EnumPhysical(Handle* gpus, uint32_t* count)
{
    return Answered(NvAPI_EnumPhysicalGPUs, [&] {
        *count = driver.displayGpus;
        gpus[0] = reinterpret_cast<Handle>(uintptr_t{1});
    });
}

int32_t EnumTcc(Handle* gpus, uint32_t* count)
{
    return Answered(NvAPI_EnumTCCPhysicalGPUs, [&] {
        *count = 1;
        gpus[0] = reinterpret_cast<Handle>(uintptr_t{2});
    });
}

int32_t BusId(Handle gpu, uint32_t* bus)
{
    return Answered(NvAPI_GPU_GetBusId, [&] { *bus = NumberOf(gpu); });
}

int32_t SlotId(Handle, uint32_t* slot)
{
    return Answered(NvAPI_GPU_GetBusSlotId, [&] { *slot = 0; });
}

int32_t PciIdentifiers(Handle, uint32_t* device, uint32_t* subsystem, uint32_t* revision, uint32_t* extended)
{
    return Answered(NvAPI_GPU_GetPCIIdentifiers, [&] {
        *device = 0x250410DE;
        *subsystem = 0x40741458;
        *revision = 0xA1;
        *extended = 0x2504;
    });
}

int32_t GpuType(Handle gpu, uint32_t* type)
{
    return Answered(NvAPI_GPU_GetGPUType, [&] { *type = NumberOf(gpu) == 2 ? 1 : driver.gpuType; });
}

int32_t Cores(Handle, uint32_t* count)
{
    return Answered(NvAPI_GPU_GetGpuCoreCount, [&] { *count = 3584; });
}

int32_t BusWidth(Handle, uint32_t* bits)
{
    return Answered(NvAPI_GPU_GetRamBusWidth, [&] { *bits = 192; });
}

int32_t Clocks(Handle, enumeration::NvapiClockFrequencies* clocks)
{
    if (clocks->Version != 0x00030108) {
        return -9;
    }
    return Answered(NvAPI_GPU_GetAllClockFrequencies, [&] {
        const uint32_t kilohertz = clocks->ClockType == 2 ? 1'777'999 : 1; // type 2 is the boost clock
        clocks->Domains[0] = {driver.presentClocks, kilohertz};
        clocks->Domains[4] = {driver.presentClocks, 7'501'000};
        clocks->Domains[8] = {1, 99'000};
    });
}

int32_t LogicalGpu(Handle gpu, Handle* logical)
{
    return Answered(NvAPI_GetLogicalGPUFromPhysicalGPU,
                    [&] { *logical = reinterpret_cast<Handle>(uintptr_t{0x10} + NumberOf(gpu)); });
}

int32_t LogicalInfo(Handle logical, enumeration::NvapiLogicalGpuInfo* info)
{
    if (info->Version != 0x00010238) {
        return -9;
    }
    return Answered(NvAPI_GPU_GetLogicalGpuInfo, [&] {
        const uint32_t luid[2] = {0xFFFF0000 + NumberOf(logical), 1}; // low half, high half
        std::memcpy(info->Luid, luid, sizeof luid);
        info->PhysicalGpuCount = driver.linkedGpus;
    });
}

template <typename Function>
void* Pointer(Function* function)
{
    return reinterpret_cast<void*>(function);
}

void* Find(uint32_t id)
{
    static const std::map<Id, void*> functions = {
        {NvAPI_Initialize, Pointer(&Initialize)},
        {NvAPI_Unload, Pointer(&Unload)},
        {NvAPI_EnumPhysicalGPUs, Pointer(&EnumPhysical)},
        {NvAPI_EnumTCCPhysicalGPUs, Pointer(&EnumTcc)},
        {NvAPI_GPU_GetBusId, Pointer(&BusId)},
        {NvAPI_GPU_GetBusSlotId, Pointer(&SlotId)},
        {NvAPI_GPU_GetPCIIdentifiers, Pointer(&PciIdentifiers)},
        {NvAPI_GPU_GetGPUType, Pointer(&GpuType)},
        {NvAPI_GPU_GetGpuCoreCount, Pointer(&Cores)},
        {NvAPI_GPU_GetRamBusWidth, Pointer(&BusWidth)},
        {NvAPI_GPU_GetAllClockFrequencies, Pointer(&Clocks)},
        {NvAPI_GetLogicalGPUFromPhysicalGPU, Pointer(&LogicalGpu)},
        {NvAPI_GPU_GetLogicalGpuInfo, Pointer(&LogicalInfo)},
    };
    const auto found = functions.find(static_cast<Id>(id));
    return found == functions.end() || driver.missing.contains(found->first) ? nullptr : found->second;
}

const std::map<Id, std::vector<Property>> propertiesOf = {
    {NvAPI_GPU_GetGPUType, {P::Integrated}},
    {NvAPI_GPU_GetGpuCoreCount, {P::CoreCount}},
    {NvAPI_GPU_GetRamBusWidth, {P::MemoryBusWidthBits}},
    {NvAPI_GPU_GetAllClockFrequencies, {P::MemoryClockMaxMhz, P::CoreClockMaxMhz}},
};

DriverReading Read()
{
    bool isStopped = false;
    auto reading = ReadNvapi(&Find, isStopped);
    CHECK(isStopped == (driver.sessions == 0));
    return reading;
}

TEST_CASE("NVAPI's values are read from every GPU, those that only compute included")
{
    driver = {};
    const auto reading = Read();
    CHECK(reading.end == Known(true));
    REQUIRE(reading.devices.size() == 2);
    const auto& first = reading.devices[0];
    CHECK(first.luid == 0x1'FFFF'0001);
    CHECK_FALSE(first.address.segment);
    CHECK(first.address.bus == 1);
    CHECK(first.address.device == 0);
    CHECK_FALSE(first.address.function);
    CHECK(first.vendorId == 0x10DE);
    CHECK(first.deviceId == 0x2504);
    CHECK(first.subsystemId == 0x40741458);
    CHECK(first.revision == 0xA1);
    const std::map<Property, Answer> expected = {
        {P::Integrated, Known(false)},
        {P::MemoryBusWidthBits, Known(uint64_t{192})},
        {P::MemoryClockMaxMhz, Known(uint64_t{7501})},
        {P::CoreClockMaxMhz, Known(uint64_t{1777})},
        {P::CoreCount, Known(uint64_t{3584})},
    };
    CHECK(first.answers == expected);
    CHECK(reading.devices[1].address.bus == 2);
    CHECK(reading.devices[1].answers.at(P::Integrated) == Known(true));
}

TEST_CASE("NVAPI's refusals are statuses of the values alone")
{
    driver = {};
    const auto healthy = Read();
    for (const auto& [id, properties] : propertiesOf) {
        struct Case {
            int32_t status;
            Answer expected;
        };
        for (const auto& [status, expected] : {Case{-104, Unsupported(Reason::NotSupported)}, Case{-3, Failed(-3)},
                                               Case{-9, Failed(-9)}, Case{-220, Failed(-220)}}) {
            driver = {};
            driver.statuses[id] = status;
            auto answers = healthy.devices[0].answers;
            for (const auto property : properties) {
                answers[property] = expected;
            }
            const auto reading = Read();
            CHECK(reading.end == Known(true));
            CHECK(reading.devices.at(0).answers == answers);
            CHECK(driver.sessions == 0);
        }
        driver = {};
        driver.missing = {id};
        CHECK(Read().devices.at(0).answers.at(properties.front()) == Unavailable(Reason::NotPresent));
        driver = {};
        driver.unwritten = {id};
        CHECK(Read().devices.at(0).answers.at(properties.front()).status == Status::Unavailable);
    }
}

TEST_CASE("Only types of GPUs that are published count")
{
    struct Case {
        uint32_t type;
        Answer expected;
    };
    for (const auto& [type, expected] : {Case{0, Unavailable(Reason::Missing)}, Case{1, Known(true)}, Case{2, Known(false)},
                                         Case{3, Unavailable(Reason::Unusable)}}) {
        driver = {};
        driver.gpuType = type;
        CHECK(Read().devices.at(0).answers.at(P::Integrated) == expected);
    }
}

TEST_CASE("A clock domain that is not present has no clock")
{
    driver = {};
    driver.presentClocks = 0;
    const auto reading = Read();
    CHECK(reading.devices.at(0).answers.at(P::MemoryClockMaxMhz) == Unavailable(Reason::Missing));
    CHECK(reading.devices.at(0).answers.at(P::CoreClockMaxMhz) == Unavailable(Reason::Missing));
}

TEST_CASE("Linked GPUs share a LUID, which is nobody's then")
{
    driver = {};
    driver.linkedGpus = 2;
    CHECK_FALSE(Read().devices.at(0).luid);
    for (const auto id : {NvAPI_GetLogicalGPUFromPhysicalGPU, NvAPI_GPU_GetLogicalGpuInfo}) {
        driver = {};
        driver.statuses[id] = -9;
        CHECK_FALSE(Read().devices.at(0).luid);
        CHECK(driver.sessions == 0);
        driver = {};
        driver.missing = {id};
        CHECK_FALSE(Read().devices.at(0).luid);
        driver = {};
        driver.unwritten = {id};
        CHECK_FALSE(Read().devices.at(0).luid);
    }
}

TEST_CASE("A GPU without any sign of its place or identity is nobody's, and the listing has failed")
{
    driver = {};
    driver.statuses = {{NvAPI_GPU_GetBusId, -220}, {NvAPI_GPU_GetPCIIdentifiers, -1}, {NvAPI_GPU_GetLogicalGpuInfo, -1}};
    const auto reading = Read();
    CHECK(reading.end == Failed(-220));
    CHECK(reading.devices.empty());
    driver.statuses.erase(NvAPI_GPU_GetPCIIdentifiers);
    CHECK(Read().end == Known(true));
    CHECK(Read().devices.size() == 2);
}

TEST_CASE("No GPU for displays is no failure where others only compute")
{
    driver = {};
    driver.statuses[NvAPI_EnumPhysicalGPUs] = -6;
    CHECK(Read().end == Known(true));
    CHECK(Read().devices.size() == 1);
    driver.statuses[NvAPI_EnumTCCPhysicalGPUs] = -6;
    CHECK(Read().end == Failed(-6));
    driver.missing = {NvAPI_EnumTCCPhysicalGPUs};
    CHECK(Read().end == Failed(-6));
}

TEST_CASE("A refused list has failed, and the other one is read")
{
    driver = {};
    driver.statuses[NvAPI_EnumPhysicalGPUs] = -1;
    CHECK(Read().end == Failed(-1));
    CHECK(Read().devices.size() == 1);
    driver = {};
    driver.statuses[NvAPI_EnumTCCPhysicalGPUs] = -1;
    CHECK(Read().end == Failed(-1));
    CHECK(Read().devices.size() == 1);
    driver.statuses[NvAPI_EnumTCCPhysicalGPUs] = -104; // a driver without such GPUs
    CHECK(Read().end == Known(true));
}

TEST_CASE("A count that is larger than the list is cut to it")
{
    driver = {};
    driver.displayGpus = 0xA5A5A5A5;
    CHECK(Read().devices.size() == 2); // null handles are no GPUs
    CHECK(driver.sessions == 0);
}

TEST_CASE("NVAPI that does not start has failed with its number")
{
    driver = {};
    driver.statuses[NvAPI_Initialize] = -6;
    CHECK(Read().end == Failed(-6));
    for (const auto id : {NvAPI_Initialize, NvAPI_Unload, NvAPI_EnumPhysicalGPUs}) {
        driver = {};
        driver.missing = {id};
        CHECK(Read().end == Unavailable(Reason::NotPresent));
    }
}

TEST_CASE("NVAPI that does not stop may still run")
{
    driver = {};
    driver.statuses[NvAPI_Unload] = -1;
    CHECK(Read().devices.size() == 2); // checks that it says so
    CHECK(driver.sessions == 1);
}

} // namespace

} // namespace orvel::shared::inventory
