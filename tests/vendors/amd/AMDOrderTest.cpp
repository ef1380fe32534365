// The order in which AMD's enumerator calls the platform, logs, and releases its resources.

#include <algorithm>

#include <doctest/doctest.h>

#include "AmdRun.h"
#include "support/NotedRegistry.h"

using namespace orvel::tests;

namespace {

using Calls = std::vector<std::string>;

/// AMD's part of the calls or events: from the creation of the ADL context on.
Calls AmdCalls(const Calls& trace)
{
    return {std::ranges::find(trace, "adl ADL2_Main_Control_Create"), trace.end()};
}

/// The calls that begin with one of the prefixes.
Calls OnlyThose(const Calls& calls, const std::vector<std::string>& prefixes)
{
    Calls those;
    std::ranges::copy_if(calls, std::back_inserter(those), [&](const std::string& call) {
        return std::ranges::any_of(prefixes, [&](const std::string& prefix) { return call.starts_with(prefix); });
    });
    return those;
}

Calls OrderOf(const Enumerated& result)
{
    return OnlyThose(AmdCalls(result.Trace), {"adl ", "adlx ", "wmi query"});
}

void Append(Calls& calls, const Calls& more)
{
    calls.insert(calls.end(), more.begin(), more.end());
}

// Intel's run has already queried the BIOS serial number.
const Calls start = {"adl ADL2_Main_Control_Create", "adlx ADLXQueryFullVersion", "adlx ADLXQueryVersion",
                     "adlx ADLXInitializeWithCallerAdl", "adlx GetGPUs"};

const std::string pciKey = "registry SYSTEM\\CurrentControlSet\\Enum\\PCI\\";
const std::string videoKey = "registry SYSTEM\\CurrentControlSet\\Control\\Video";

const std::string rowsQuery = "wmi query SELECT * FROM Win32_VideoController WHERE PNPDeviceID LIKE 'PCI%VEN_1002%' AND "
                              "Name = 'AMD Radeon RX 6800 XT'";

const Calls end = {"adlx Release IADLXGPUList", "adlx ADLXTerminate", "adl ADL2_Main_Control_Destroy"};

/// The last calls for a GPU, after its rows are read.
const Calls gpuEnd = {"adlx Release IADLXPerformanceMonitoringServices", "adlx Release IADLXGPU"};

/// The driver calls for one GPU without ECC, before the query for its rows.
Calls GpuCalls(const std::string& index, const std::string& adapter)
{
    const std::string core = "adl ADL2_Adapter_Graphic_Core_Info_Get " + adapter;
    return {"adlx Size",
            "adlx At_GPUList " + index,
            "adlx VendorId",
            "adlx Name",
            "adlx PNPString",
            "adlx DeviceId",
            "adlx TotalVRAM",
            "adlx AdlAdapterIndexFromADLXGPU",
            "adlx GetPerformanceMonitoringServices",
            core,
            core,
            "adl ADL2_Adapter_Crossfire_Get " + adapter,
            "adl ADL_Overdrive5_CurrentActivity_Get " + adapter,
            "adl ADL2_Workstation_ECC_Caps " + adapter,
            "adl ADL2_Workstation_ECCData_Get " + adapter,
            "adl ADL2_Workstation_ECCData_Get " + adapter,
            "adlx GetSupportedGPUMetrics",
            "adlx GetCurrentGPUMetrics",
            "adlx IsSupportedGPUClockSpeed",
            "adlx GPUClockSpeed",
            core,
            "adlx Release IADLXGPUMetrics",
            "adlx Release IADLXGPUMetricsSupport"};
}

/// The queries for the first row's memory clock, which are sent with those for the other two figures of the memory modules.
const Calls memoryQueries = {"wmi query SELECT Speed FROM Win32_PhysicalMemory",
                             "wmi query SELECT SMBIOSMemoryType FROM Win32_PhysicalMemory",
                             "wmi query SELECT TotalWidth FROM Win32_PhysicalMemory"};

} // namespace

TEST_CASE("The drivers and WMI are called in a fixed order, from the creation of the ADL context to its end")
{
    Calls expected = start;
    Append(expected, GpuCalls("0", "0"));
    Append(expected, {rowsQuery});
    Append(expected, memoryQueries);
    Append(expected, gpuEnd);
    Append(expected, {"adlx Size"});
    Append(expected, end);
    CHECK(OrderOf(EnumerateAmd(AmdDesktop())) == expected);
}

TEST_CASE("GPUs are read one after another, with the size after each, and WMI is queried once for two equal cards")
{
    Calls expected = start;
    Append(expected, GpuCalls("0", "0"));
    Append(expected, {rowsQuery});
    Append(expected, memoryQueries);
    Append(expected, gpuEnd);
    Append(expected, GpuCalls("1", "5"));
    Append(expected, gpuEnd);
    Append(expected, {"adlx Size"});
    Append(expected, end);
    CHECK(OrderOf(EnumerateAmd(AmdTwoCards())) == expected);
}

TEST_CASE("The BIOS serial number is read after the ADL context is created, and before ADLX is initialised")
{
    const Calls calls = OnlyThose(AmdCalls(EnumerateAmd(AmdDesktop()).Trace), {"adl ", "adlx ", "wmi get SerialNumber"});
    REQUIRE(calls.size() > 2);
    CHECK(calls[0] == "adl ADL2_Main_Control_Create");
    CHECK(calls[1] == "wmi get SerialNumber");
    CHECK(calls[2] == "adlx ADLXQueryFullVersion");
}

TEST_CASE("The values of a row and of the machine are read in a fixed order")
{
    const NotedRegistry registry(TestModule());
    const Enumerated result = EnumerateAmd(AmdDesktop());
    const std::string deviceKey = pciKey + "VEN_1002&DEV_73BF&SUBSYS_0E3A1002&REV_C1";
    const Calls calls = OnlyThose(AmdCalls(result.Events),
                                  {"wmi get", "opencl clGetPlatformIDs", "dxgi CreateDXGIFactory", "dwm ", "registry "});
    CHECK(calls == Calls{"wmi get SerialNumber",
                         "wmi get Availability",
                         "wmi get ConfigManagerErrorCode",
                         "wmi get ConfigManagerUserConfig",
                         "wmi get CurrentHorizontalResolution",
                         "wmi get CurrentVerticalResolution",
                         "wmi get CurrentRefreshRate",
                         "wmi get DriverVersion",
                         "dwm DwmIsCompositionEnabled",
                         pciKey,
                         deviceKey,
                         deviceKey + "\\6&2F4D2B2&0&00000019",
                         "opencl clGetPlatformIDs", // the number
                         "opencl clGetPlatformIDs", // the platforms
                         "wmi get Speed",           // both modules, for the clock
                         "wmi get Speed",
                         "dxgi CreateDXGIFactory",
                         "wmi get SMBIOSMemoryType",
                         "wmi get Speed", // for the bandwidth
                         "wmi get Speed",
                         "wmi get SMBIOSMemoryType",
                         "wmi get TotalWidth",
                         "wmi get DriverDate",
                         videoKey,
                         "registry {6C7C7D60-6E6B-11ED-8F2A-806E6F6E6963}",
                         "registry 0000",
                         "wmi get Name",
                         "wmi get AdapterRAM",
                         "wmi get Status"});
}

namespace {

/// A desktop that only reports the values without which the run would end. OpenCL's second platform fails to list its
/// devices, and the type of the memory has no bandwidth.
Json SilentDesktop()
{
    Json machine = AmdDesktop();
    const Json id = VideoController(machine)["PNPDeviceID"];
    const Json name = VideoController(machine)["Name"];
    VideoController(machine) = {
        {"Availability", 3}, {"PNPDeviceID", id}, {"Name", {{"where", name}, {"status", "0x80041001"}}}};
    Row(machine, "Win32_Bios") = Json::object();
    machine["wmi"]["classes"]["Win32_PhysicalMemory"] = {{{"SMBIOSMemoryType", 12}}};
    machine.erase("registry");
    machine["dxgi"]["adapters"] = Json::array();
    machine["opencl"]["platforms"].push_back({{"devices_count", -30}, {"devices", Json::array()}});
    AdlAdapter(machine) = Json::object();
    machine["adlx"]["GetPerformanceMonitoringServices"] = 3;
    return machine;
}

std::string Unread(const std::string& getter, const std::string& text)
{
    return Line("warning", "BaseGraphicCard::" + getter, text);
}

} // namespace

TEST_CASE("If no AMD property can be read, every property logs its line in the fixed order")
{
    const Calls expected = {
        "adl ADL2_Main_Control_Create",
        adlReady,
        "wmi get SerialNumber",
        adlxReady,
        "wmi get Availability",
        "wmi get ConfigManagerErrorCode",
        Unread("GetConfigError", "Failed to get ConfigManagerErrorCode from WMI"),
        "wmi get ConfigManagerUserConfig",
        Unread("GetUserConfig", "Failed to get ConfigManagerUserConfig from WMI"),
        "wmi get CurrentHorizontalResolution",
        Unread("GetCurrentResolution", "Failed to get current resolution from WMI."),
        "wmi get CurrentRefreshRate",
        Unread("GetCurrentRefreshRate", "Failed to get current refresh rate from WMI"),
        "wmi get DriverVersion",
        Unread("GetDriverVersion", "Failed to get driver version from WMI"),
        "dwm DwmIsCompositionEnabled",
        pciKey,
        Line("warning", "GetBusIdFromRegistry", "Failed to get Bus ID from registry. Error code: 2"),
        "opencl clGetPlatformIDs", // the chip name
        "opencl clGetPlatformIDs",
        Line("error", "OpenCLWrapper::GetDevices", "Failed to get Open CL devices"),
        "wmi get Speed",
        "dxgi CreateDXGIFactory",
        "wmi get SMBIOSMemoryType",
        "wmi get Speed", // for the bandwidth
        "wmi get SMBIOSMemoryType",
        Line("error", "GetMemoryBandwidth", "Error: Argument out of range"),
        "wmi get TotalWidth",
        "wmi get DriverDate",
        Line("warning", "AMD::QueryInfo", "Failed to get Driver Date from WMI"),
        videoKey,
        "wmi get Name",
        Unread("GetAdapterName", "Failed to get Adapter Name from WMI"),
        "wmi get AdapterRAM",
        Unread("GetAdapterRam", "Failed to get AdapterRAM from WMI"),
        "wmi get Status",
        Unread("GetAdapterStatus", "Failed to get Status from WMI"),
        "adl ADL2_Main_Control_Destroy",
        adlDestroyed,
        adlDestroyed,
    };
    const NotedRegistry registry(TestModule());
    const Enumerated result = EnumerateAmd(SilentDesktop());
    CHECK(OnlyThose(AmdCalls(result.Events), {"adl ADL2_Main", "wmi get", "registry ", "opencl clGetPlatformIDs",
                                              "dxgi CreateDXGIFactory", "dwm ", "error ", "warning "}) == expected);
}

TEST_CASE("The ECC mode is read between its support and the errors, if ECC is supported")
{
    Json machine = AmdDesktop();
    AdlAdapter(machine)["ADL2_Workstation_ECC_Caps"] = 1;
    const Calls ecc = Only(EnumerateAmd(machine).Trace, "adl ADL2_Workstation");
    CHECK(ecc == Calls{"adl ADL2_Workstation_ECC_Caps 0", "adl ADL2_Workstation_ECC_Get 0",
                       "adl ADL2_Workstation_ECCData_Get 0", "adl ADL2_Workstation_ECCData_Get 0"});
}

TEST_CASE("Both metrics are read, even if the first one fails")
{
    for (const char* call : {"GetSupportedGPUMetrics", "GetCurrentGPUMetrics"}) {
        CAPTURE(call);
        Json machine = AmdDesktop();
        machine["adlx"][call] = 3;
        const Enumerated result = EnumerateAmd(machine);
        CHECK(Only(result.Trace, "adlx GetSupportedGPUMetrics").size() == 1);
        CHECK(Only(result.Trace, "adlx GetCurrentGPUMetrics").size() == 1);
        CHECK(Only(result.Trace, "adlx IsSupportedGPUClockSpeed").empty());
    }
}

TEST_CASE("Only ADLXInitializeWithCallerAdl initialises ADLX, and the observed clock is never queried")
{
    for (const char* name : {"amd-desktop", "amd-two-cards", "amd-workstation", "workstation"}) {
        CAPTURE(name);
        const Enumerated result = Enumerate(Machine(name));
        CHECK(std::ranges::count(result.Trace, "adlx ADLXInitialize") == 0);
        CHECK(std::ranges::count(result.Trace, "adlx ADLXInitializeWithIncompatibleDriver") == 0);
        CHECK(Only(result.Trace, "adl ADL_Adapter_ObservedClockInfo_Get").empty());
    }
}

namespace {

decltype(&::FreeLibrary) freeLibrary = nullptr;
void (*destroyClient)(void*) = nullptr;

BOOL WINAPI NoteRelease(HMODULE module)
{
    char path[MAX_PATH] = "";
    ::GetModuleFileNameA(module, path, MAX_PATH);
    const std::string text = path;
    Note("free " + text.substr(text.rfind('\\') + 1));
    return freeLibrary(module);
}

void NoteClient(void* client)
{
    Note("free WMIClient");
    destroyClient(client);
}

/// Records the DLLs that the enumerators release, and the WMI clients, during its lifetime.
class NotedReleases {
public:
    NotedReleases()
    {
        freeLibrary = library.Original<decltype(freeLibrary)>();
        destroyClient = client.Original<decltype(destroyClient)>();
    }

private:
    ReplacedImport library{TestModule(), L"kernel32.dll", "FreeLibrary", reinterpret_cast<void*>(&NoteRelease)};
    ReplacedImport client{TestModule(), L"orvel-shared-wmi-client.dll", "_ZN5orvel6shared3wmi9WMIClientD1Ev",
                          reinterpret_cast<void*>(&NoteClient)};
};

/// The releases and log lines after the last event with this text.
Calls EndAfter(const Enumerated& result, const std::string& last)
{
    const auto found = std::find(result.Events.rbegin(), result.Events.rend(), last);
    REQUIRE(found != result.Events.rend());
    return OnlyThose({found.base(), result.Events.end()}, {"adl ", "adlx ", "free ", "error "});
}

} // namespace

TEST_CASE("A run ends with its last GPU, ADLX, ADL, OpenCL and WMI, in this order")
{
    const NotedReleases releases;
    CHECK(EndAfter(EnumerateAmd(AmdDesktop()), "wmi get Status") ==
          Calls{"adlx Release IADLXPerformanceMonitoringServices", "adlx Release IADLXGPU", "adlx Size",
                "adlx Release IADLXGPUList", "adlx ADLXTerminate", "free amdadlx64.dll",
                "free orvel-amd-tests.dll", // releases the reference that protected ADLX's callback
                "adl ADL2_Main_Control_Destroy", "free atiadlxx.dll", adlDestroyed,
                adlDestroyed, // the wrapper's destructor
                "free opencl.dll", "free WMIClient"});
}

TEST_CASE("A failed query for rows leaves ADLX loaded, and releases the GPU, ADL, OpenCL and WMI in this order")
{
    Json machine = AmdDesktop();
    FailQuery(machine, "VEN_1002", 1);
    const NotedReleases releases;
    CHECK(EndAfter(EnumerateLeavingAdlx(machine), rowsQuery) ==
          Calls{Line("error", "AMD::QueryInfo", "Failed to get Win32_VideoController fields from WMI"),
                "adlx Release IADLXPerformanceMonitoringServices", "adlx Release IADLXGPU", "adlx Release IADLXGPUList",
                "adl ADL2_Main_Control_Destroy", "free atiadlxx.dll", adlDestroyed, "free opencl.dll", "free WMIClient"});
}

TEST_CASE("A failed BIOS query releases ADL, OpenCL and WMI in this order")
{
    Json machine = AmdDesktop();
    FailQuery(machine, "Win32_Bios", 0);
    const NotedReleases releases;
    CHECK(EndAfter(EnumerateAmd(machine), "adl ADL2_Main_Control_Create") ==
          Calls{adlReady, Line("error", "AMD::QueryInfo", "Failed to get SerialNumber from Win32_Bios"),
                "adl ADL2_Main_Control_Destroy", "free atiadlxx.dll", adlDestroyed, "free opencl.dll", "free WMIClient"});
}
