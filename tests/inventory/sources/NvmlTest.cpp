#include "../Print.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "interfaces/NvmlTypes.h"
#include "sources/Nvml.h"

namespace orvel::shared::inventory {

namespace {

using P = Property;

constexpr uint64_t gibibyte = 1 << 30;

/// NVML as a driver of today has it, with two RTX A5000 that differ in all that can differ.
struct Driver {
    std::map<std::string, int> statuses; ///< of the calls that are refused
    std::set<std::string> missing;
    std::set<std::string> unwritten; ///< calls that succeed without writing anything
    std::set<std::string> rubbish;
    std::vector<std::string> calls;
    int sessions = 0;
    unsigned int count = 2;
};
Driver driver;

/// The number of a device, from 1, which is also its bus.
unsigned int NumberOf(nvmlDevice_t device)
{
    return static_cast<unsigned int>(reinterpret_cast<uintptr_t>(device));
}

template <typename... Outputs>
int Answered(const char* name, const auto& write, Outputs*... outputs)
{
    driver.calls.emplace_back(name);
    if (driver.sessions == 0 && std::string(name) != "nvmlInit_v2") {
        return 1;
    }
    if (const auto status = driver.statuses.find(name); status != driver.statuses.end()) {
        return status->second;
    }
    if (driver.rubbish.contains(name)) {
        (std::memset(outputs, 0xA5, sizeof *outputs), ...);
    } else if (!driver.unwritten.contains(name)) {
        write();
    }
    return 0;
}

template <typename Output>
int Give(const char* name, Output* target, Output value)
{
    return Answered(
        name, [&] { *target = value; }, target);
}

int GiveText(const char* name, char* target, unsigned int size, const std::string& text)
{
    if (driver.rubbish.contains(name)) {
        std::memset(target, 0xA5, size);
        return 0;
    }
    return Answered(name, [&] {
        REQUIRE(text.size() < size);
        std::strcpy(target, text.c_str());
    });
}

int Init()
{
    return Answered("nvmlInit_v2", [] { ++driver.sessions; });
}

int Shutdown()
{
    return Answered("nvmlShutdown", [] { --driver.sessions; });
}

int Count(unsigned int* count)
{
    return Give("nvmlDeviceGetCount_v2", count, driver.count);
}

int Handle(unsigned int index, nvmlDevice_t* device)
{
    return Give("nvmlDeviceGetHandleByIndex_v2", device, reinterpret_cast<nvmlDevice_t>(uintptr_t{index} + 1));
}

int PciInfo(nvmlDevice_t device, nvmlPciInfo_t* place)
{
    return Answered(
        "nvmlDeviceGetPciInfo_v3",
        [&] {
            place->domain = NumberOf(device) == 2 ? 1 : 0;
            place->bus = NumberOf(device);
            place->device = 0;
            place->pciDeviceId = 0x223110DE;
            place->pciSubSystemId = 0x147E10DE;
        },
        place);
}

int DriverVersion(char* text, unsigned int size)
{
    return GiveText("nvmlSystemGetDriverVersion", text, size, "596.72");
}

int MemoryInfo(nvmlDevice_t device, nvmlMemory_t* memory)
{
    return Give("nvmlDeviceGetMemoryInfo", memory, nvmlMemory_t{NumberOf(device) * 24 * gibibyte, 1, 2});
}

int BusWidth(nvmlDevice_t, unsigned int* bits)
{
    return Give("nvmlDeviceGetMemoryBusWidth", bits, 384U);
}

int MaxClock(nvmlDevice_t, int type, unsigned int* megahertz)
{
    return Give("nvmlDeviceGetMaxClockInfo", megahertz, type == 2 ? 8001U : type == 0 ? 2100U : 0U);
}

int Cores(nvmlDevice_t, unsigned int* count)
{
    return Give("nvmlDeviceGetNumGpuCores", count, 8192U);
}

int Capability(nvmlDevice_t, int* major, int* minor)
{
    return Answered(
        "nvmlDeviceGetCudaComputeCapability", [&] { *major = 8, *minor = 6; }, major, minor);
}

int Generation(nvmlDevice_t, unsigned int* generation)
{
    return Give("nvmlDeviceGetCurrPcieLinkGeneration", generation, 1U);
}

int MostGeneration(nvmlDevice_t, unsigned int* generation)
{
    return Give("nvmlDeviceGetGpuMaxPcieLinkGeneration", generation, 4U);
}

int Lanes(nvmlDevice_t, unsigned int* lanes)
{
    return Give("nvmlDeviceGetCurrPcieLinkWidth", lanes, 8U);
}

int MostLanes(nvmlDevice_t, unsigned int* lanes)
{
    return Give("nvmlDeviceGetMaxPcieLinkWidth", lanes, 16U);
}

int Vbios(nvmlDevice_t, char* text, unsigned int size)
{
    return GiveText("nvmlDeviceGetVbiosVersion", text, size, "94.02.6D.00.0D");
}

int Serial(nvmlDevice_t device, char* text, unsigned int size)
{
    return GiveText("nvmlDeviceGetSerial", text, size, "132492101234" + std::to_string(NumberOf(device)));
}

int Uuid(nvmlDevice_t device, char* text, unsigned int size)
{
    return GiveText("nvmlDeviceGetUUID", text, size, "GPU-" + std::to_string(NumberOf(device)));
}

int EccMode(nvmlDevice_t device, int* current, int* pending)
{
    return Answered(
        "nvmlDeviceGetEccMode", [&] { *current = NumberOf(device) == 1, *pending = !*current; }, current, pending);
}

int EccErrors(nvmlDevice_t, int type, int counter, uint64_t* errors)
{
    // Only lifetime counters are 7 and 3.
    return Give("nvmlDeviceGetTotalEccErrors", errors, uint64_t{counter != 1 ? 99U : type == 0 ? 7U : 3U});
}

int Threshold(nvmlDevice_t, int threshold, unsigned int* celsius)
{
    return Give("nvmlDeviceGetTemperatureThreshold", celsius, threshold == 0 ? 98U : threshold == 1 ? 95U : 93U);
}

template <typename Function>
void* Pointer(Function* function)
{
    return reinterpret_cast<void*>(function);
}

void* Find(const char* name)
{
    static const std::map<std::string, void*> functions = {
        {"nvmlInit_v2", Pointer(&Init)},
        {"nvmlShutdown", Pointer(&Shutdown)},
        {"nvmlDeviceGetCount_v2", Pointer(&Count)},
        {"nvmlDeviceGetHandleByIndex_v2", Pointer(&Handle)},
        {"nvmlDeviceGetPciInfo_v3", Pointer(&PciInfo)},
        {"nvmlSystemGetDriverVersion", Pointer(&DriverVersion)},
        {"nvmlDeviceGetMemoryInfo", Pointer(&MemoryInfo)},
        {"nvmlDeviceGetMemoryBusWidth", Pointer(&BusWidth)},
        {"nvmlDeviceGetMaxClockInfo", Pointer(&MaxClock)},
        {"nvmlDeviceGetNumGpuCores", Pointer(&Cores)},
        {"nvmlDeviceGetCudaComputeCapability", Pointer(&Capability)},
        {"nvmlDeviceGetCurrPcieLinkGeneration", Pointer(&Generation)},
        {"nvmlDeviceGetGpuMaxPcieLinkGeneration", Pointer(&MostGeneration)},
        {"nvmlDeviceGetCurrPcieLinkWidth", Pointer(&Lanes)},
        {"nvmlDeviceGetMaxPcieLinkWidth", Pointer(&MostLanes)},
        {"nvmlDeviceGetVbiosVersion", Pointer(&Vbios)},
        {"nvmlDeviceGetSerial", Pointer(&Serial)},
        {"nvmlDeviceGetUUID", Pointer(&Uuid)},
        {"nvmlDeviceGetEccMode", Pointer(&EccMode)},
        {"nvmlDeviceGetTotalEccErrors", Pointer(&EccErrors)},
        {"nvmlDeviceGetTemperatureThreshold", Pointer(&Threshold)},
    };
    const auto found = functions.find(name);
    return found == functions.end() || driver.missing.contains(name) ? nullptr : found->second;
}

/// The functions that give one or more properties, with these.
const std::map<std::string, std::vector<Property>> propertiesOf = {
    {"nvmlSystemGetDriverVersion", {P::DriverVersionMarketing}},
    {"nvmlDeviceGetMemoryInfo", {P::BoardMemoryBytes}},
    {"nvmlDeviceGetMemoryBusWidth", {P::MemoryBusWidthBits}},
    {"nvmlDeviceGetMaxClockInfo", {P::MemoryClockMaxMhz, P::CoreClockMaxMhz}},
    {"nvmlDeviceGetNumGpuCores", {P::CoreCount}},
    {"nvmlDeviceGetCudaComputeCapability", {P::ComputeCapability}},
    {"nvmlDeviceGetCurrPcieLinkGeneration", {P::PcieGeneration}},
    {"nvmlDeviceGetGpuMaxPcieLinkGeneration", {P::PcieGenerationMax}},
    {"nvmlDeviceGetCurrPcieLinkWidth", {P::PcieLanes}},
    {"nvmlDeviceGetMaxPcieLinkWidth", {P::PcieLanesMax}},
    {"nvmlDeviceGetVbiosVersion", {P::BiosVersion}},
    {"nvmlDeviceGetSerial", {P::SerialNumber}},
    {"nvmlDeviceGetUUID", {P::Uuid}},
    {"nvmlDeviceGetEccMode", {P::EccEnabled}},
    {"nvmlDeviceGetTotalEccErrors", {P::EccCorrectedErrors, P::EccUncorrectedErrors}},
    {"nvmlDeviceGetTemperatureThreshold", {P::TemperatureSlowdownCelsius, P::TemperatureShutdownCelsius}},
};

DriverReading Read()
{
    bool isStopped = false;
    auto reading = ReadNvml(&Find, isStopped);
    CHECK(isStopped == (driver.sessions == 0));
    return reading;
}

TEST_CASE("NVML's values are read from every device, with its place")
{
    driver = {};
    const auto reading = Read();
    CHECK(reading.end == Known(true));
    REQUIRE(reading.devices.size() == 2);
    const auto& first = reading.devices[0];
    CHECK(first.address.segment == 0);
    CHECK(first.address.bus == 1);
    CHECK(first.address.device == 0);
    CHECK(first.address.function == 0);
    CHECK(first.vendorId == 0x10DE);
    CHECK(first.deviceId == 0x2231);
    CHECK(first.subsystemId == 0x147E10DE);
    const std::map<Property, Answer> expected = {
        {P::DriverVersionMarketing, Known("596.72")},
        {P::BoardMemoryBytes, Known(24 * gibibyte)},
        {P::MemoryBusWidthBits, Known(uint64_t{384})},
        {P::MemoryClockMaxMhz, Known(uint64_t{8001})},
        {P::CoreClockMaxMhz, Known(uint64_t{2100})},
        {P::CoreCount, Known(uint64_t{8192})},
        {P::ComputeCapability, Known("8.6")},
        {P::PcieGeneration, Known(uint64_t{1})},
        {P::PcieGenerationMax, Known(uint64_t{4})},
        {P::PcieLanes, Known(uint64_t{8})},
        {P::PcieLanesMax, Known(uint64_t{16})},
        {P::BiosVersion, Known("94.02.6D.00.0D")},
        {P::SerialNumber, Known("1324921012341")},
        {P::Uuid, Known("GPU-1")},
        {P::EccEnabled, Known(true)},
        {P::EccCorrectedErrors, Known(uint64_t{7})},
        {P::EccUncorrectedErrors, Known(uint64_t{3})},
        {P::TemperatureSlowdownCelsius, Known(uint64_t{95})},
        {P::TemperatureShutdownCelsius, Known(uint64_t{98})},
    };
    CHECK(first.answers == expected);
    const auto& second = reading.devices[1];
    CHECK(second.address.segment == 1);
    CHECK(second.address.bus == 2);
    CHECK(second.answers.at(P::BoardMemoryBytes) == Known(48 * gibibyte));
    CHECK(second.answers.at(P::Uuid) == Known("GPU-2"));
    CHECK(second.answers.at(P::EccEnabled) == Known(false));
}

TEST_CASE("NVML's refusals are statuses of the values alone")
{
    driver = {};
    const auto healthy = Read();
    for (const auto& entry : propertiesOf) {
        const auto& name = entry.first; // CAPTURE cannot take a structured binding
        const auto& properties = entry.second;
        struct Case {
            int status;
            Answer expected;
        };
        for (const auto& each : {Case{3, Unsupported(Reason::NotSupported)}, Case{13, Failed(13)}, Case{15, Failed(15)},
                                 Case{999, Failed(999)}}) {
            CAPTURE(name);
            CAPTURE(each.status);
            driver = {};
            driver.statuses[name] = each.status;
            const auto reading = Read();
            CHECK(reading.end == Known(true));
            REQUIRE(reading.devices.size() == 2);
            auto answers = healthy.devices[1].answers;
            for (const auto property : properties) {
                answers[property] = each.expected;
            }
            CHECK(reading.devices[1].answers == answers);
            CHECK(driver.sessions == 0);
        }
    }
}

TEST_CASE("A function that the driver lacks leaves its values unavailable")
{
    for (const auto& entry : propertiesOf) {
        const auto& name = entry.first; // CAPTURE cannot take a structured binding
        const auto& properties = entry.second;
        CAPTURE(name);
        driver = {};
        driver.missing = {name};
        const auto reading = Read();
        REQUIRE(reading.devices.size() == 2);
        for (const auto& [property, answer] : reading.devices[0].answers) {
            const bool isItsOwn = std::find(properties.begin(), properties.end(), property) != properties.end();
            CHECK((answer == Unavailable(Reason::NotPresent)) == isItsOwn);
            CHECK(IsKnown(answer) == !isItsOwn);
        }
    }
}

TEST_CASE("A success that has written nothing leaves no number behind")
{
    for (const auto& entry : propertiesOf) {
        const auto& name = entry.first; // CAPTURE cannot take a structured binding
        const auto& properties = entry.second;
        CAPTURE(name);
        driver = {};
        driver.unwritten = {name};
        const auto reading = Read();
        REQUIRE(reading.devices.size() == 2);
        for (const auto property : properties) {
            const auto& answer = reading.devices[0].answers.at(property);
            const bool isZero = answer == Known(uint64_t{0}); // of the memory, which is checked as it is matched
            CHECK((answer.status == Status::Unavailable || (isZero && property == P::BoardMemoryBytes)));
        }
    }
}

TEST_CASE("Rubbish is no text")
{
    for (const char* name : {"nvmlSystemGetDriverVersion", "nvmlDeviceGetVbiosVersion", "nvmlDeviceGetSerial",
                             "nvmlDeviceGetUUID", "nvmlDeviceGetCudaComputeCapability", "nvmlDeviceGetEccMode"}) {
        CAPTURE(name);
        driver = {};
        driver.rubbish = {name};
        CHECK(Read().devices.at(0).answers.at(propertiesOf.at(name).front()) == Unavailable(Reason::Unusable));
    }
}

TEST_CASE("A device that NVML does not list completely does not keep the others from it")
{
    for (const char* name : {"nvmlDeviceGetHandleByIndex_v2", "nvmlDeviceGetPciInfo_v3"}) {
        CAPTURE(name);
        driver = {};
        driver.statuses[name] = 15;
        const auto reading = Read();
        CHECK(reading.end == Failed(15));
        CHECK(reading.devices.empty());
        CHECK(std::count(driver.calls.begin(), driver.calls.end(), name) == 2);
        CHECK(driver.sessions == 0);
    }
}

TEST_CASE("NVML that does not start, or cannot count, has failed with its number")
{
    driver = {};
    driver.statuses["nvmlInit_v2"] = 9;
    CHECK(Read().end == Failed(9));
    CHECK(driver.calls == std::vector<std::string>{"nvmlInit_v2"}); // what has not begun is not ended

    driver = {};
    driver.statuses["nvmlDeviceGetCount_v2"] = 999;
    CHECK(Read().end == Failed(999));
    CHECK(driver.sessions == 0);

    driver = {};
    driver.count = 0xA5A5A5A5;
    CHECK(Read().end == Unavailable(Reason::Unusable));
    CHECK(driver.sessions == 0);
}

TEST_CASE("Without PCI addresses NVML is not even started")
{
    for (const char* name : {"nvmlInit_v2", "nvmlShutdown", "nvmlDeviceGetCount_v2", "nvmlDeviceGetHandleByIndex_v2",
                             "nvmlDeviceGetPciInfo_v3"}) {
        CAPTURE(name);
        driver = {};
        driver.missing = {name};
        const auto reading = Read();
        CHECK(reading.end == Unavailable(Reason::NotPresent));
        CHECK(reading.devices.empty());
        CHECK(driver.calls.empty());
    }
}

TEST_CASE("NVML that does not stop may still run")
{
    driver = {};
    driver.statuses["nvmlShutdown"] = 999;
    const auto reading = Read(); // checks that it says so
    CHECK(reading.devices.size() == 2);
    CHECK(driver.sessions == 1);
}

} // namespace

} // namespace orvel::shared::inventory
