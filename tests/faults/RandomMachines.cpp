#include "RandomMachines.h"

#include <random>

#include "Faults.h"

namespace orvel::tests {

namespace {

constexpr uint32_t allOnes = 0xFFFFFFFF;

/// Creates one machine. Choices are remainders of random numbers, not std distributions, whose results differ by library.
class Maker {
public:
    explicit Maker(uint32_t seed) : random(seed), oddness(2 + Below(40)) {}

    Json Make();

private:
    uint32_t Below(uint32_t limit) { return static_cast<uint32_t>(random()) % limit; }
    bool Chance(uint32_t percent) { return Below(100) < percent; }
    bool IsOdd() { return Chance(oddness); }

    template <typename Value>
    Value OneOf(std::initializer_list<Value> values)
    {
        return values.begin()[Below(static_cast<uint32_t>(values.size()))];
    }

    Json OddUnsigned();
    Json OddSigned();
    std::string OddText();
    Json OddProperty(const Json& healthy);
    Json OddRegistryValue();

    void ChangeLeaves(Json& value, bool isSigned);
    void ChangeCalls(Json& functions, bool isSigned);
    void Repeat(Json& array, uint32_t most);
    void ChangeNames(Json& hidden, std::initializer_list<const char*> names);
    void ChangeWmi(Json& wmi);
    void ChangeRegistry(Json& registry);
    void ChangeDxgi(Json& dxgi);
    void ChangeOpenCl(Json& opencl);
    void ChangeNvapi(Json& nvapi);
    void ChangeNvmlDevice(Json& device);
    void ChangeNvml(Json& nvml);
    void ChangeAdl(Json& adl);
    void ChangeAdlx(Json& adlx);

    std::mt19937 random;
    uint32_t oddness; ///< percentage of the values that are changed
};

Json Maker::OddUnsigned()
{
    return OneOf<uint32_t>({0, 1, 2, 3, 5, 12, 21, 26, 64, 255, 65536, 0x7FFFFFFF, 0x80000000, allOnes, Below(64),
                            static_cast<uint32_t>(random())});
}

Json Maker::OddSigned()
{
    return static_cast<int32_t>(OddUnsigned().get<uint32_t>());
}

std::string Maker::OddText()
{
    const std::string pnp = "PCI\\VEN_8086&DEV_4680&SUBSYS_86941043&REV_0C\\3&11583659&0&10";
    switch (Below(14)) {
    case 0:
        return "";
    case 1:
        return std::string(1 + Below(70000), static_cast<char>('!' + Below(90)));
    case 2:
        return "Grafikkarte \xC3\x84\xC3\x96\xC3\x9C \xE6\x98\xBE\xE5\x8D\xA1 \xF0\x9F\x8E\xB4";
    case 3:
        return pnp.substr(0, Below(static_cast<uint32_t>(pnp.size())));
    case 4:
        return "O'Brien's \"card\" %_%";
    case 5:
        return std::to_string(random());
    case 6:
        return OneOf<const char*>({"99999999999999999999", "-1", "0", "  12 ", "1e39", "nan", "0x", "-", "+7", "1e-400"});
    case 7:
        return std::string("A\0B", 3);
    case 8:
        return OneOf<const char*>({"8086", "1002", "10DE", "ZZZZ", "4680", "73BF", "FFFFFFFFF"});
    case 9:
        return OneOf<const char*>({"Intel(R) UHD Graphics 770", "AMD Radeon RX 6800 XT", "Intel", "RrRr 1"});
    case 10:
        return "\t\r\n\x01\x7F";
    case 11:
        return OneOf<const char*>({"PCI bus 1, device 2, function 3;(1,0,0)", "(1,2", ",,,", "1,2,3", "4294967296,0,0"});
    case 12:
        return OneOf<const char*>({"pci\\ven_8086&dev_4680", "PCI\\VEN_1002&DEV_73BF&SUBSYS_0", "pci\\ven_"});
    default:
        return "x";
    }
}

Json Maker::OddProperty(const Json& healthy)
{
    switch (Below(11)) {
    case 0:
        return nullptr;
    case 1:
        return Status(static_cast<int32_t>(0x80041001));
    case 2:
        return OddUnsigned();
    case 3:
        return OddText();
    case 4:
        return Chance(50);
    case 5:
        return {{"vt", "R8"}, {"value", OneOf<double>({0.0, -1.0, 1e300, 0.5, 4294967296.0})}};
    case 6:
        return {{"vt", "R4"}, {"value", OneOf<double>({0.0, -1.5, 3e38, 3200.0})}};
    case 7:
        return {{"vt", "I4"}, {"value", OddSigned()}};
    case 8:
        return {{"vt", "UI4"}, {"value", OddUnsigned()}};
    default: // the query sees the healthy text
        return healthy.is_string() ? Json{{"where", healthy}, {"value", OddText()}} : Json(OddText());
    }
}

Json Maker::OddRegistryValue()
{
    switch (Below(4)) {
    case 0:
        return OddUnsigned();
    case 1:
        return {{"hex", OneOf<const char*>({"", "00", "ffd8", "31", "310032", "3d00d8ff00"})}};
    default:
        return OddText();
    }
}

/// Replaces some of the numbers, texts and flags in a value.
void Maker::ChangeLeaves(Json& value, bool isSigned)
{
    if (value.is_structured()) {
        for (Json& member : value) {
            ChangeLeaves(member, isSigned);
        }
    } else if (!IsOdd()) {
        return;
    } else if (value.is_boolean()) {
        value = Chance(50);
    } else if (value.is_number() || (value.is_string() && value.get<std::string>().starts_with("0x"))) {
        value = isSigned ? OddSigned() : OddUnsigned();
    } else if (value.is_string()) {
        value = OddText();
    }
}

/// Makes functions fail, fail with a value or with rubbish, be unsupported, or return something odd.
void Maker::ChangeCalls(Json& functions, bool isSigned)
{
    std::vector<std::string> names;
    for (const auto& function : functions.items()) {
        names.push_back(function.key());
    }
    for (const std::string& name : names) {
        ChangeLeaves(functions[name], isSigned);
        if (!IsOdd()) {
            continue;
        }
        const uint32_t way = Below(4);
        if (way == 0) {
            functions.erase(name);
        } else if (way == 3) {
            functions[name] = StatusAndRubbish(OddSigned());
        } else {
            functions[name] = way == 1 ? Status(OddSigned()) : StatusAndValue(OddSigned(), functions[name]);
        }
    }
}

/// Removes, keeps or repeats the elements.
void Maker::Repeat(Json& array, uint32_t most)
{
    if (!IsOdd()) {
        return;
    }
    const Json given = array;
    array = Json::array();
    for (uint32_t count = Below(most + 1); count > 0; --count) {
        array.push_back(given[Below(static_cast<uint32_t>(given.size()))]);
    }
}

void Maker::ChangeNames(Json& hidden, std::initializer_list<const char*> names)
{
    if (Chance(oddness / 4)) {
        hidden.push_back(OneOf(names));
    }
}

void Maker::ChangeWmi(Json& wmi)
{
    if (Chance(oddness / 8)) {
        wmi["connect"] = static_cast<int32_t>(0x80041003);
    }
    for (Json& rows : wmi["classes"]) {
        Repeat(rows, 12);
        for (Json& row : rows) {
            for (auto& property : row.items()) {
                if (IsOdd() && Chance(50)) {
                    property.value() = OddProperty(property.value());
                }
            }
            if (IsOdd()) {
                row.erase(
                    OneOf<const char*>({"Availability", "Name", "AdapterRAM", "Speed", "SMBIOSMemoryType", "PNPDeviceID"}));
            }
        }
    }
    if (Chance(oddness / 4)) {
        wmi["classes"].erase(OneOf<const char*>({"Win32_Bios", "Win32_VideoController", "Win32_PhysicalMemory"}));
    }
    if (Chance(oddness / 4)) {
        const char* text = OneOf<const char*>({"Win32_Bios", "VEN_", "Speed", "TotalWidth", "SMBIOSMemoryType", "SELECT"});
        wmi["failures"].push_back({{"contains", text}, {"nth", 1 + Below(4)}, {"status", OneOf<int32_t>({-1, 1, 0x40004})}});
    }
}

void Maker::ChangeRegistry(Json& registry)
{
    for (Json& key : registry) {
        for (Json& value : key) {
            if (IsOdd()) {
                value = OddRegistryValue();
            }
        }
    }
    if (IsOdd()) {
        registry["SYSTEM\\CurrentControlSet\\Enum\\PCI\\VEN_8086&DEV_4680&A" + std::string(Below(180), 'x')] =
            Json::object();
    }
    if (IsOdd()) { // a deep tree with a value at its end
        std::string path = "SYSTEM\\CurrentControlSet\\Control\\Video\\{0}";
        for (uint32_t level = Below(60); level > 0; --level) {
            path += "\\" + std::to_string(level);
        }
        registry[path] = {{"MatchingDeviceId", OddRegistryValue()}, {"HardwareInformation.BiosString", OddRegistryValue()}};
    }
}

void Maker::ChangeDxgi(Json& dxgi)
{
    Repeat(dxgi["adapters"], 40);
    for (Json& adapter : dxgi["adapters"]) {
        ChangeLeaves(adapter, false);
    }
    if (Chance(oddness / 4)) {
        dxgi["factory"] = OneOf<int32_t>({static_cast<int32_t>(0x887A0004), 1});
    }
}

void Maker::ChangeOpenCl(Json& opencl)
{
    const auto counts = {0U, 1U, 2U, 40U, 65537U, 0x80000000U, allOnes};
    Repeat(opencl["platforms"], 8);
    for (Json& platform : opencl["platforms"]) {
        Repeat(platform["devices"], 8);
        for (Json& device : platform["devices"]) {
            ChangeCalls(device, false);
            device["type"] = IsOdd() ? "cpu" : "gpu";
        }
        if (IsOdd()) {
            platform["devices_count"] = StatusAndValue(OneOf({-5, 0}), OneOf(counts));
        }
        if (IsOdd()) {
            platform["devices_fetch"] = OddSigned();
        }
    }
    if (IsOdd()) {
        opencl["platforms_count"] = StatusAndValue(OneOf({-1001, 0}), OneOf(counts));
    }
    ChangeNames(opencl["missing"], {"clGetPlatformIDs", "clGetDeviceIDs", "clGetDeviceInfo"});
}

void Maker::ChangeNvapi(Json& nvapi)
{
    Repeat(nvapi["gpus"], 64);
    for (Json& gpu : nvapi["gpus"]) {
        ChangeCalls(gpu, false);
    }
    if (IsOdd()) {
        nvapi["0xD2D25687"] = Json::array({OddUnsigned(), OddUnsigned()});
    }
    if (Chance(oddness / 4)) {
        nvapi[OneOf<const char*>({"NvAPI_Initialize", "NvAPI_EnumPhysicalGPUs", "NvAPI_Unload", "0xD2D25687"})] =
            OddSigned();
    }
    ChangeNames(nvapi["unresolved"], {"NvAPI_Unload", "NvAPI_GPU_GetFullName", "NvAPI_GPU_GetECCErrorInfo", "0xD2D25687"});
}

/// The capability's numbers are signed; thresholds and clocks have one answer for each argument.
void Maker::ChangeNvmlDevice(Json& device)
{
    Json signedCalls = {{"nvmlDeviceGetCudaComputeCapability", device["nvmlDeviceGetCudaComputeCapability"]}};
    Json others = device;
    others.erase("nvmlDeviceGetCudaComputeCapability");
    device = Json::object();
    for (const char* name : {"nvmlDeviceGetTemperatureThreshold", "nvmlDeviceGetClockInfo"}) {
        device[name] = others[name];
        others.erase(name);
        ChangeCalls(device[name], false);
    }
    ChangeCalls(signedCalls, true);
    ChangeCalls(others, false);
    device.update(signedCalls);
    device.update(others);
}

void Maker::ChangeNvml(Json& nvml)
{
    Repeat(nvml["devices"], 64);
    for (Json& device : nvml["devices"]) {
        ChangeNvmlDevice(device);
    }
    if (IsOdd()) {
        nvml["nvmlDeviceGetCount_v2"] = OneOf({0U, 1U, 40U, 65537U, 0x80000000U, allOnes});
    }
    if (Chance(oddness / 4)) {
        nvml[OneOf<const char*>({"nvmlInit_v2", "nvmlShutdown"})] = OddSigned();
    }
}

void Maker::ChangeAdl(Json& adl)
{
    for (Json& adapter : adl["adapters"]) {
        ChangeCalls(adapter, true);
    }
    ChangeNames(adl["missing"], {"ADL2_Main_Control_Create", "ADL2_Main_Control_Destroy", "ADL2_Workstation_ECC_Get"});
    if (IsOdd()) {
        adl["ADL2_Main_Control_Create"] = OddSigned();
    }
}

void Maker::ChangeAdlx(Json& adlx)
{
    Repeat(adlx["gpus"], 16);
    for (Json& gpu : adlx["gpus"]) {
        const Json total = OddUnsigned();
        gpu.erase("TotalVRAM");
        ChangeCalls(gpu, true);
        gpu["TotalVRAM"] = total;
        if (IsOdd()) {
            gpu["At_GPUList"] = OneOf({1, 2, 3, 12});
        }
    }
    if (IsOdd()) {
        adlx["shrink_after"] = Below(20);
    }
    if (Chance(oddness / 2)) {
        const char* call = OneOf<const char*>({"ADLXInitializeWithCallerAdl", "GetGPUs", "GetPerformanceMonitoringServices",
                                               "GetSupportedGPUMetrics", "GetCurrentGPUMetrics"});
        adlx[call] = OneOf({1, 2, 3, 12});
    }
    ChangeNames(adlx["missing"], {"ADLXTerminate", "ADLXQueryVersion"});
}

Json Maker::Make()
{
    Json machine = HealthyWorkstation();
    ChangeWmi(machine["wmi"]);
    ChangeRegistry(machine["registry"]);
    ChangeDxgi(machine["dxgi"]);
    ChangeOpenCl(machine["opencl"]);
    ChangeNvapi(machine["nvapi"]);
    ChangeNvml(machine["nvml"]);
    ChangeAdl(machine["adl"]);
    ChangeAdlx(machine["adlx"]);
    for (const char* api : {"dwm", "wmi", "registry", "dxgi", "opencl", "nvapi", "nvml", "adl", "adlx"}) {
        if (Chance(oddness / 8)) {
            machine.erase(api);
        }
    }
    return machine;
}

} // namespace

Json RandomMachine(uint32_t seed)
{
    return Maker(seed).Make();
}

} // namespace orvel::tests
