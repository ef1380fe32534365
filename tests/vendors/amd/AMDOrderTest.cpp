// The order in which AMD's enumerator asks the platform.

#include <algorithm>

#include <doctest/doctest.h>

#include "AmdRun.h"

using namespace orvel::tests;

namespace {

using Calls = std::vector<std::string>;

/// AMD's part of the trace: from the creation of the ADL context on.
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

// Intel's run has asked for the BIOS serial number before.
const Calls start = {"adl ADL2_Main_Control_Create", "adlx ADLXQueryFullVersion", "adlx ADLXQueryVersion",
                     "adlx ADLXInitializeWithCallerAdl", "adlx GetGPUs"};

const std::string rowsQuery = "wmi query SELECT * FROM Win32_VideoController WHERE PNPDeviceID LIKE 'PCI%VEN_1002%' AND "
                              "Name = 'AMD Radeon RX 6800 XT'";

const Calls end = {"adlx ADLXTerminate", "adl ADL2_Main_Control_Destroy"};

/// What the drivers are asked about one GPU whose memory supports no ECC, before the query for its rows.
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
            core};
}

/// The queries for the first row's memory clock: it is asked with the other two figures of the memory modules.
const Calls memoryQueries = {"wmi query SELECT Speed FROM Win32_PhysicalMemory",
                             "wmi query SELECT SMBIOSMemoryType FROM Win32_PhysicalMemory",
                             "wmi query SELECT TotalWidth FROM Win32_PhysicalMemory"};

} // namespace

TEST_CASE("The drivers and WMI are asked in the fixed order, from the ADL context to its end")
{
    Calls expected = start;
    Append(expected, GpuCalls("0", "0"));
    Append(expected, {rowsQuery});
    Append(expected, memoryQueries);
    Append(expected, {"adlx Size"});
    Append(expected, end);
    CHECK(OrderOf(EnumerateAmd(AmdDesktop())) == expected);
}

TEST_CASE("GPUs are asked one after another, the size after each, and WMI once for the rows of two equal cards")
{
    Calls expected = start;
    Append(expected, GpuCalls("0", "0"));
    Append(expected, {rowsQuery});
    Append(expected, memoryQueries);
    Append(expected, GpuCalls("1", "5"));
    Append(expected, {"adlx Size"});
    Append(expected, end);
    CHECK(OrderOf(EnumerateAmd(AmdTwoCards())) == expected);
}

TEST_CASE("The BIOS serial number is read after the ADL context is created, and before ADLX is")
{
    const Calls calls = OnlyThose(AmdCalls(EnumerateAmd(AmdDesktop()).Trace), {"adl ", "adlx ", "wmi get SerialNumber"});
    REQUIRE(calls.size() > 2);
    CHECK(calls[0] == "adl ADL2_Main_Control_Create");
    CHECK(calls[1] == "wmi get SerialNumber");
    CHECK(calls[2] == "adlx ADLXQueryFullVersion");
}

TEST_CASE("A row's values are read in the fixed order, the machine's in between")
{
    const Enumerated result = EnumerateAmd(AmdDesktop());
    const Calls calls = OnlyThose(AmdCalls(result.Trace), {"wmi get", "opencl clGetPlatformIDs", "dxgi CreateDXGIFactory"});
    CHECK(calls == Calls{"wmi get SerialNumber",
                         "wmi get Availability",
                         "wmi get ConfigManagerErrorCode",
                         "wmi get ConfigManagerUserConfig",
                         "wmi get CurrentHorizontalResolution",
                         "wmi get CurrentVerticalResolution",
                         "wmi get CurrentRefreshRate",
                         "wmi get DriverVersion",
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
                         "wmi get Name",
                         "wmi get AdapterRAM",
                         "wmi get Status"});
}

TEST_CASE("The ECC mode is asked for between its support and the errors, where ECC is supported")
{
    Json machine = AmdDesktop();
    AdlAdapter(machine)["ADL2_Workstation_ECC_Caps"] = 1;
    const Calls ecc = Only(EnumerateAmd(machine).Trace, "adl ADL2_Workstation");
    CHECK(ecc == Calls{"adl ADL2_Workstation_ECC_Caps 0", "adl ADL2_Workstation_ECC_Get 0",
                       "adl ADL2_Workstation_ECCData_Get 0", "adl ADL2_Workstation_ECCData_Get 0"});
}

TEST_CASE("Both metrics are asked for before either refusal counts")
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

TEST_CASE("Of the two initialisations of ADLX only the one on the caller's ADL is used, and the observed clock never")
{
    for (const char* name : {"amd-desktop", "amd-two-cards", "amd-workstation", "workstation"}) {
        CAPTURE(name);
        const Enumerated result = Enumerate(Machine(name));
        CHECK(std::ranges::count(result.Trace, "adlx ADLXInitialize") == 0);
        CHECK(std::ranges::count(result.Trace, "adlx ADLXInitializeWithIncompatibleDriver") == 0);
        CHECK(Only(result.Trace, "adl ADL_Adapter_ObservedClockInfo_Get").empty());
    }
}
