// Compares the inventory's NVML reader with a real driver. Prints what the driver of this computer answers as the `nvml`
// section of a machine file, reads it again with the reader, and reports each value that differs.
//
// orvel-nvml [LIBRARY]; status 0: all values agree, 1: some differ, 3: there is no driver.

#include <dlfcn.h>

#include <iostream>
#include <map>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "interfaces/NvmlTypes.h"
#include "model/Properties.h"
#include "sources/Nvml.h"

namespace {

using namespace orvel::shared::inventory;
using Json = nlohmann::ordered_json;
using P = Property;

constexpr int differs = 1, noDriver = 3;

void* library = nullptr;

void* Find(const char* name)
{
    return dlsym(library, name);
}

/// The status of a function; the value that it has for a driver without it is never used.
template <typename... Parameters>
int Call(const char* name, Parameters... parameters)
{
    using Function = int (*)(Parameters...);
    const auto function = reinterpret_cast<Function>(Find(name));
    return function ? function(parameters...) : NVML_ERROR_UNKNOWN;
}

Json AnswerOf(int status, Json value)
{
    return status == NVML_SUCCESS ? std::move(value) : Json{{"status", status}};
}

template <typename Number = unsigned int, typename... Parameters>
Json NumberOf(const char* name, Parameters... parameters)
{
    Number number = 0;
    const int status = Call(name, parameters..., &number);
    return AnswerOf(status, number);
}

template <typename... Parameters>
Json TextOf(const char* name, Parameters... parameters)
{
    char text[96] = {};
    const int status = Call(name, parameters..., static_cast<char*>(text), static_cast<unsigned int>(sizeof text));
    return AnswerOf(status, text);
}

Json PairOf(const char* name, nvmlDevice_t device)
{
    int first = 0, second = 0;
    const int status = Call(name, device, &first, &second);
    return AnswerOf(status, {first, second});
}

Json NumbersOf(const char* name, nvmlDevice_t device, const std::vector<int>& arguments)
{
    Json numbers = Json::object();
    for (const int argument : arguments) {
        numbers[std::to_string(argument)] = NumberOf(name, device, argument);
    }
    return numbers;
}

Json EccErrorsOf(const char* name, nvmlDevice_t device)
{
    Json errors = Json::object();
    for (const int type : {0, 1}) {
        for (const int counter : {0, 1}) {
            errors[std::to_string(type) + "," + std::to_string(counter)] = NumberOf<uint64_t>(name, device, type, counter);
        }
    }
    return errors;
}

Json PlaceOf(const char* name, nvmlDevice_t device)
{
    nvmlPciInfo_t place{};
    const int status = Call(name, device, &place);
    return AnswerOf(status, {{"domain", place.domain},
                             {"bus", place.bus},
                             {"device", place.device},
                             {"pciDeviceId", place.pciDeviceId},
                             {"pciSubSystemId", place.pciSubSystemId}});
}

Json MemoryOf(const char* name, nvmlDevice_t device)
{
    nvmlMemory_t memory{};
    const int status = Call(name, device, &memory);
    return AnswerOf(status, {{"total", memory.total}, {"free", memory.free}, {"used", memory.used}});
}

Json ClocksOf(const char* name, nvmlDevice_t device)
{
    return NumbersOf(name, device, {NVML_CLOCK_GRAPHICS, NVML_CLOCK_MEM});
}

Json ThresholdsOf(const char* name, nvmlDevice_t device)
{
    return NumbersOf(name, device, {0, 1, 3});
}

struct Function {
    const char* name;
    Json (*ask)(const char* name, nvmlDevice_t device);
};

constexpr Function functions[] = {
    {"nvmlDeviceGetPciInfo_v3", &PlaceOf},
    {"nvmlDeviceGetMemoryInfo", &MemoryOf},
    {"nvmlDeviceGetUUID", &TextOf<nvmlDevice_t>},
    {"nvmlDeviceGetSerial", &TextOf<nvmlDevice_t>},
    {"nvmlDeviceGetVbiosVersion", &TextOf<nvmlDevice_t>},
    {"nvmlDeviceGetCudaComputeCapability", &PairOf},
    {"nvmlDeviceGetMemoryBusWidth", &NumberOf<unsigned int, nvmlDevice_t>},
    {"nvmlDeviceGetNumGpuCores", &NumberOf<unsigned int, nvmlDevice_t>},
    {"nvmlDeviceGetMaxClockInfo", &ClocksOf},
    {"nvmlDeviceGetCurrPcieLinkGeneration", &NumberOf<unsigned int, nvmlDevice_t>},
    {"nvmlDeviceGetMaxPcieLinkGeneration", &NumberOf<unsigned int, nvmlDevice_t>},
    {"nvmlDeviceGetGpuMaxPcieLinkGeneration", &NumberOf<unsigned int, nvmlDevice_t>},
    {"nvmlDeviceGetCurrPcieLinkWidth", &NumberOf<unsigned int, nvmlDevice_t>},
    {"nvmlDeviceGetMaxPcieLinkWidth", &NumberOf<unsigned int, nvmlDevice_t>},
    {"nvmlDeviceGetTemperatureThreshold", &ThresholdsOf},
    {"nvmlDeviceGetEccMode", &PairOf},
    {"nvmlDeviceGetTotalEccErrors", &EccErrorsOf},
};

Json DeviceOf(unsigned int index)
{
    nvmlDevice_t device = nullptr;
    if (const int status = Call("nvmlDeviceGetHandleByIndex_v2", index, &device); status != NVML_SUCCESS) {
        return {{"handle", status}};
    }
    Json answers = Json::object();
    for (const auto& [name, ask] : functions) {
        if (Find(name)) {
            answers[name] = ask(name, device);
        }
    }
    return answers;
}

Json SectionOf()
{
    Json section = {{"missing", Json::array()},
                    {"nvmlSystemGetDriverVersion", TextOf("nvmlSystemGetDriverVersion")},
                    {"devices", Json::array()}};
    for (const auto& function : functions) {
        if (!Find(function.name)) {
            section["missing"].push_back(function.name);
        }
    }
    unsigned int count = 0;
    Call("nvmlDeviceGetCount_v2", &count);
    for (unsigned int index = 0; index < count; ++index) {
        section["devices"].push_back(DeviceOf(index));
    }
    return section;
}

/// Where the section has the value of a property. What changes while the card works is left out.
const std::map<Property, const char*> places = {
    {P::BoardMemoryBytes, "/nvmlDeviceGetMemoryInfo/total"},
    {P::MemoryBusWidthBits, "/nvmlDeviceGetMemoryBusWidth"},
    {P::MemoryClockMaxMhz, "/nvmlDeviceGetMaxClockInfo/2"},
    {P::CoreClockMaxMhz, "/nvmlDeviceGetMaxClockInfo/0"},
    {P::CoreCount, "/nvmlDeviceGetNumGpuCores"},
    {P::PcieGenerationMax, "/nvmlDeviceGetGpuMaxPcieLinkGeneration"},
    {P::PcieLanesMax, "/nvmlDeviceGetMaxPcieLinkWidth"},
    {P::BiosVersion, "/nvmlDeviceGetVbiosVersion"},
    {P::SerialNumber, "/nvmlDeviceGetSerial"},
    {P::Uuid, "/nvmlDeviceGetUUID"},
    {P::TemperatureSlowdownCelsius, "/nvmlDeviceGetTemperatureThreshold/1"},
    {P::TemperatureShutdownCelsius, "/nvmlDeviceGetTemperatureThreshold/0"},
    {P::EccCorrectedErrors, "/nvmlDeviceGetTotalEccErrors/0,1"},
    {P::EccUncorrectedErrors, "/nvmlDeviceGetTotalEccErrors/1,1"},
};

/// An answer of the section, as the reader has to have it; a refused structure has no members.
Answer ExpectedOf(const Json& device, const Json::json_pointer& place)
{
    if (!device.contains(place)) {
        const bool isRefused = device.contains(place.parent_pointer() / "status");
        return isRefused ? ExpectedOf(device, place.parent_pointer()) : Unavailable(Reason::NotPresent);
    }
    const Json& answer = device[place];
    if (answer.is_object()) {
        return DriverAnswer(answer["status"].get<int>(), NVML_ERROR_NOT_SUPPORTED, {});
    }
    return answer.is_string() ? Known(answer.get<std::string>()) : Known(answer.get<uint64_t>());
}

/// The number of values that differ.
int Compare(const Json& device, const DriverDevice& read)
{
    int differences = 0;
    for (const auto& [property, place] : places) {
        if (read.answers.at(property) != ExpectedOf(device, Json::json_pointer(place))) {
            std::cerr << RowOf(property).name << " of bus " << read.address.bus.value_or(0) << " differs\n";
            ++differences;
        }
    }
    return differences;
}

int CompareAll(const Json& section)
{
    bool isStopped = false;
    const auto reading = ReadNvml(&Find, isStopped);
    std::vector<Json> devices;
    for (const auto& device : section["devices"]) {
        if (device.contains("/nvmlDeviceGetPciInfo_v3/bus"_json_pointer)) {
            devices.push_back(device);
        }
    }
    if (reading.devices.size() != devices.size()) {
        std::cerr << "the reader lists " << reading.devices.size() << " of " << devices.size() << " devices\n";
        return differs;
    }
    int differences = 0;
    for (std::size_t index = 0; index < devices.size(); ++index) {
        differences += Compare(devices[index], reading.devices[index]);
    }
    std::cerr << devices.size() * places.size() - static_cast<std::size_t>(differences) << " of "
              << devices.size() * places.size() << " values agree\n";
    return differences == 0 ? 0 : differs;
}

} // namespace

int main(int count, char** arguments)
{
    const char* const name = count > 1 ? arguments[1] : "libnvidia-ml.so.1";
    library = dlopen(name, RTLD_NOW);
    if (!library) {
        std::cerr << "No NVIDIA driver on this computer: " << dlerror() << "\n";
        return noDriver;
    }
    if (const int status = Call("nvmlInit_v2"); status != NVML_SUCCESS) {
        std::cerr << "No NVIDIA driver on this computer: nvmlInit_v2 returns " << status << "\n";
        return noDriver;
    }
    const Json section = SectionOf();
    Call("nvmlShutdown");
    std::cout << Json{{"nvml", section}}.dump(2) << "\n";
    return CompareAll(section);
}
