#include "RandomInventories.h"

#include <random>

namespace orvel::tests {

namespace {

/// The list of a section, empty where the machine has none.
Json& ListOf(Json& section, const char* name)
{
    Json& list = section[name];
    if (list.is_null()) {
        list = Json::array();
    }
    return list;
}

/// Choices are remainders of random numbers, not std distributions, whose results differ by library.
class Breaker {
public:
    explicit Breaker(uint32_t seed) : random(seed), oddness(2 + Below(30)) {}

    void Break(Json& machine);

private:
    uint32_t Below(uint32_t limit) { return static_cast<uint32_t>(random()) % limit; }
    bool IsOdd() { return Below(100) < oddness; }

    template <typename Value>
    Value OneOf(std::initializer_list<Value> values)
    {
        return values.begin()[Below(static_cast<uint32_t>(values.size()))];
    }

    Json Refusal() { return {{"status", OneOf({1, 2, 3, 5, 12, 13, 1168, -1, -104})}}; }

    Json OddAnswer()
    {
        switch (Below(3)) {
        case 0:
            return {{"status", 0}, {"writes", "nothing"}};
        case 1:
            return {{"status", 0}, {"writes", "rubbish"}};
        default:
            return Refusal();
        }
    }

    void BreakDevice(Json& device);
    void BreakAdapter(Json& adapter);
    void BreakPath(Json& path);
    void BreakDxCoreAdapter(Json& adapter);
    void BreakDriver(Json& section, const char* list, const char* names, std::initializer_list<const char*> functions);

    std::mt19937 random;
    uint32_t oddness; ///< percentage of the answers that are changed
};

void Breaker::BreakDevice(Json& device)
{
    for (auto& property : device.items()) {
        if (property.key() == "instance_id" || property.key() == "Driver" || !IsOdd()) {
            continue;
        }
        switch (property.key().starts_with("SetupDi") ? 0 : Below(4)) {
        case 0:
            property.value() = OneOf({5, 13, 259, 1168});
            break;
        case 1:
            property.value() = {{"type", OneOf({0, 3, 7, 17, 18, 0x1003, 0x2012})},
                                {"hex", OneOf<const char*>({"", "00", "ff", "00d80000", "410042000000", "41004200"})}};
            break;
        default:
            property.value() = Refusal();
        }
        if (property.value().is_number() && !property.key().starts_with("SetupDi")) {
            property.value() = Json{{"status", property.value()}};
        }
    }
    if (IsOdd()) {
        device[OneOf<const char*>({"SetupDiEnumDeviceInfo", "SetupDiGetDeviceInstanceIdW", "SetupDiOpenDevRegKey"})] = 5;
    }
    if (IsOdd()) {
        device.erase("Driver");
    }
}

void Breaker::BreakAdapter(Json& adapter)
{
    if (IsOdd()) {
        adapter[OneOf<const char*>({"EnumAdapters1", "GetDesc1"})] = OneOf<uint32_t>({0x887A0005, 0x887A0002, 1});
    }
    if (IsOdd()) {
        adapter["listed_by"] = Json::array({OneOf<const char*>({"EnumAdapters", "EnumAdapters1"})});
    }
    if (IsOdd()) {
        adapter["Luid"] = Below(4);
    }
    if (IsOdd()) {
        adapter["Description"] = {{"hex", "410000d84200"}};
    }
}

void Breaker::BreakPath(Json& path)
{
    for (const char* name : {"viewGdiDeviceName", "monitorFriendlyDeviceName"}) {
        if (IsOdd()) {
            path[name] = OneOf<Json>({{{"status", 5}}, {{"hex", "00d84100"}}, "", "A\tB"});
        }
    }
    if (IsOdd()) {
        path.erase("sourceMode");
    }
}

void Breaker::BreakDxCoreAdapter(Json& adapter)
{
    if (IsOdd()) {
        adapter["GetAdapter"] = OneOf<uint32_t>({0x80004005, 1});
    }
    if (IsOdd()) {
        adapter[OneOf<const char*>({"InstanceLuid", "IsIntegrated"})] = {{"status", OneOf<uint32_t>({0x80004005, 1})}};
    }
    if (IsOdd()) {
        adapter.erase("IsIntegrated");
    }
    if (IsOdd()) {
        adapter["attributes"] = Json::array({OneOf<const char*>({"D3D11_GRAPHICS", "D3D12_CORE_COMPUTE"})});
    }
}

/// The functions of each GPU, and those that the driver lacks.
void Breaker::BreakDriver(Json& section, const char* list, const char* names, std::initializer_list<const char*> functions)
{
    for (Json& gpu : ListOf(section, list)) {
        for (auto& function : gpu.items()) {
            if (IsOdd() && function.key() != "tcc" && function.key() != "NvAPI_GetLogicalGPUFromPhysicalGPU") {
                function.value() = function.key() == "handle" || function.key() == "At_GPUList" ? Refusal() : OddAnswer();
            }
        }
    }
    if (IsOdd()) {
        section[names].push_back(OneOf(functions));
    }
}

void Breaker::Break(Json& machine)
{
    for (Json& device : ListOf(machine["pnp"], "devices")) {
        BreakDevice(device);
    }
    for (Json& adapter : ListOf(machine["dxgi"], "adapters")) {
        BreakAdapter(adapter);
    }
    for (Json& path : ListOf(machine["displays"], "paths")) {
        BreakPath(path);
    }
    for (Json& adapter : ListOf(machine["dxcore"], "adapters")) {
        BreakDxCoreAdapter(adapter);
    }
    BreakDriver(machine["nvml"], "devices", "missing",
                {"nvmlShutdown", "nvmlDeviceGetPciInfo_v3", "nvmlDeviceGetUUID", "nvmlSystemGetDriverVersion",
                 "nvmlDeviceGetSerial", "nvmlErrorString"});
    BreakDriver(machine["nvapi"], "gpus", "unresolved",
                {"NvAPI_EnumTCCPhysicalGPUs", "NvAPI_GPU_GetLogicalGpuInfo", "NvAPI_GPU_GetBusSlotId", "NvAPI_Unload"});
    BreakDriver(machine["adlx"], "gpus", "missing",
                {"ADLXQueryFullVersion", "ADLXInitialize", "ADLXInitializeWithCallerAdl", "ADLXTerminate"});
    if (IsOdd()) {
        machine["adlx"]["ADLXQueryFullVersion"] = OneOf<Json>({{{"status", 3}}, 1, 0x0001000400000070});
    }
    if (IsOdd()) {
        machine["adlx"][OneOf<const char*>({"ADLXInitialize", "ADLXInitializeWithCallerAdl"})] = OneOf({1, 2, 3});
    }
    for (const char* section : {"pnp", "dxgi", "displays", "dxcore", "nvml", "nvapi", "adl", "adlx"}) {
        if (IsOdd()) {
            machine.erase(section);
        }
    }
    if (IsOdd()) {
        machine["outside_system_folder"] = Json::array({OneOf<const char*>({"dxgi.dll", "nvml.dll", "atiadlxx.dll"})});
    }
}

} // namespace

Json WithRandomFailures(Json machine, uint32_t seed)
{
    Breaker(seed).Break(machine);
    return machine;
}

} // namespace orvel::tests
