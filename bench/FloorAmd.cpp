#include "Floor.h"

#include <cstdlib>
#include <cwchar>

#include "FloorOpenCl.h"
#include "FloorSystem.h"
#include "FloorWmi.h"
#include "interfaces/AdlxInterfaces.h"
#include "system/DisplayRegistry.h"
#include "system/PciBusNumber.h"
#include "vendors/amd/AdlTypes.h"

namespace orvel::bench {

namespace {

using namespace shared::enumeration;

constexpr cl_uint amdVendor = 0x1002;

void* __stdcall Allocate(int bytes)
{
    return std::malloc(static_cast<size_t>(bytes));
}

void __stdcall Free(void** buffer)
{
    std::free(*buffer);
}

struct Adl {
    ModuleHandle Module{::LoadLibraryW(L"atiadlxx.dll")};
    ADL_CONTEXT_HANDLE Context = nullptr;
    ADL2_Main_Control_Create_t Create = Find<ADL2_Main_Control_Create_t>("ADL2_Main_Control_Create");
    ADL2_Adapter_Crossfire_Get_t Crossfire = Find<ADL2_Adapter_Crossfire_Get_t>("ADL2_Adapter_Crossfire_Get");
    ADL2_Workstation_ECC_Caps_t EccCaps = Find<ADL2_Workstation_ECC_Caps_t>("ADL2_Workstation_ECC_Caps");
    ADL2_Workstation_ECC_Get_t Ecc = Find<ADL2_Workstation_ECC_Get_t>("ADL2_Workstation_ECC_Get");
    ADL2_Workstation_ECCData_Get_t EccData = Find<ADL2_Workstation_ECCData_Get_t>("ADL2_Workstation_ECCData_Get");
    ADL2_Adapter_Graphic_Core_Info_Get_t Cores =
        Find<ADL2_Adapter_Graphic_Core_Info_Get_t>("ADL2_Adapter_Graphic_Core_Info_Get");
    ADL_Adapter_ObservedClockInfo_Get_t Clocks =
        Find<ADL_Adapter_ObservedClockInfo_Get_t>("ADL_Adapter_ObservedClockInfo_Get");
    ADL_Overdrive5_CurrentActivity_Get_t Activity =
        Find<ADL_Overdrive5_CurrentActivity_Get_t>("ADL_Overdrive5_CurrentActivity_Get");
    ADL2_Main_Control_Destroy_t Destroy = Find<ADL2_Main_Control_Destroy_t>("ADL2_Main_Control_Destroy");

    template <typename Function>
    Function Find(const char* name) const
    {
        return Module ? FindFunction<Function>(Module.get(), name) : nullptr;
    }

    void ReadCores(int adapter) const
    {
        ADLGraphicCoreInfo info{};
        Cores(Context, adapter, &info);
    }

    void ReadEccData(int adapter) const
    {
        ADLECCData data{};
        EccData(Context, adapter, &data);
    }

    void ReadEcc(int adapter) const
    {
        int supported = 0;
        EccCaps(Context, adapter, &supported);
        int modes[3]{};
        if (supported != 0) {
            Ecc(Context, adapter, &modes[0], &modes[1], &modes[2]);
        }
    }
};

struct Adlx {
    ModuleHandle Module;
    IADLXSystem* System = nullptr;
    IADLMapping* Mapping = nullptr;
    ADLX_RESULT (*Terminate)() = nullptr;
};

void Start(Adlx& adlx, ADL_CONTEXT_HANDLE context)
{
    using MemoryFree = void(__stdcall*)(void**);
    using InitializeWithCallerAdl = ADLX_RESULT (*)(uint64_t, IADLXSystem**, IADLMapping**, void*, MemoryFree);
    adlx.Module.reset(::LoadLibraryExW(L"amdadlx64.dll", nullptr,
                                       LOAD_LIBRARY_SEARCH_USER_DIRS | LOAD_LIBRARY_SEARCH_APPLICATION_DIR |
                                           LOAD_LIBRARY_SEARCH_DEFAULT_DIRS | LOAD_LIBRARY_SEARCH_SYSTEM32));
    const HMODULE module = adlx.Module.get();
    const auto queryFullVersion = FindFunction<ADLX_RESULT (*)(uint64_t*)>(module, "ADLXQueryFullVersion");
    const auto queryVersion = FindFunction<ADLX_RESULT (*)(const char**)>(module, "ADLXQueryVersion");
    const auto initialize = FindFunction<InitializeWithCallerAdl>(module, "ADLXInitializeWithCallerAdl");
    FindFunction<void*>(module, "ADLXInitializeWithIncompatibleDriver");
    FindFunction<void*>(module, "ADLXInitialize");
    adlx.Terminate = FindFunction<ADLX_RESULT (*)()>(module, "ADLXTerminate");
    uint64_t fullVersion = 0;
    const char* version = nullptr;
    queryFullVersion(&fullVersion);
    queryVersion(&version);
    initialize(0x0001000200000048, &adlx.System, &adlx.Mapping, context, &Free);
}

/// The values of one GPU that later calls need.
struct Gpu {
    const char* Name = "";
    const char* DeviceId = "";
    wchar_t WideName[256] = L"";
    int32_t Adapter = 0;
};

void ReadIdentity(IADLXGPU& object, const Adlx& adlx, Gpu& gpu)
{
    const char* text = nullptr;
    uint32_t mebibytes = 0;
    object.VendorId(&text);
    object.Name(&gpu.Name);
    object.PNPString(&text);
    object.DeviceId(&gpu.DeviceId);
    object.TotalVRAM(&mebibytes);
    adlx.Mapping->AdlAdapterIndexFromADLXGPU(&object, &gpu.Adapter);
    ::MultiByteToWideChar(CP_UTF8, 0, gpu.Name, -1, gpu.WideName, 256);
}

void ReadAdl(const Adl& adl, int adapter)
{
    adl.ReadCores(adapter);
    adl.ReadCores(adapter);
    ADLCrossfireComb combination{};
    ADLCrossfireInfo info{};
    adl.Crossfire(adl.Context, adapter, &combination, &info);
    ADLPMActivity activity{};
    activity.iSize = sizeof(activity);
    adl.Activity(adapter, &activity);
    adl.ReadEcc(adapter);
    adl.ReadEccData(adapter);
    adl.ReadEccData(adapter);
}

void ReadMetrics(IADLXPerformanceMonitoringServices& services, IADLXGPU& object, const Adl& adl, int adapter)
{
    AdlxPtr<IADLXGPUMetricsSupport> support;
    AdlxPtr<IADLXGPUMetrics> metrics;
    support.Receive([&](auto received) { return services.GetSupportedGPUMetrics(&object, received); });
    metrics.Receive([&](auto received) { return services.GetCurrentGPUMetrics(&object, received); });
    bool isSupported = false;
    support->IsSupportedGPUClockSpeed(&isSupported);
    int32_t megahertz = 0;
    metrics->GPUClockSpeed(&megahertz);
    adl.ReadCores(adapter);
}

void ReadRow(const FloorRows& row, const Gpu& gpu, HMODULE opencl, FloorWmi& wmi, AdapterRegistry& registry)
{
    for (const wchar_t* property :
         {L"Availability", L"ConfigManagerErrorCode", L"ConfigManagerUserConfig", L"CurrentHorizontalResolution",
          L"CurrentVerticalResolution", L"CurrentRefreshRate", L"DriverVersion"}) {
        row.Read(property);
    }
    ReadComposition();
    GetBusIdFromRegistry({"1002", gpu.DeviceId, ""}, registry);
    ReadDevice(opencl, gpu.Name, amdVendor, CL_DEVICE_NAME);
    ReadMemorySpeed(wmi);
    ReadSharedMemory();
    ReadMemoryType(wmi);
    ReadMemorySpeed(wmi);
    ReadMemoryType(wmi);
    ReadTotalWidth(wmi);
    row.Read(L"DriverDate");
    GetBiosString({"1002", gpu.DeviceId, ""}, registry);
    for (const wchar_t* property : {L"Name", L"AdapterRAM", L"Status"}) {
        row.Read(property);
    }
}

void ReadRows(const Gpu& gpu, HMODULE opencl, FloorWmi& wmi, AdapterRegistry& registry)
{
    wchar_t wql[512];
    std::swprintf(wql, std::size(wql),
                  L"SELECT * FROM Win32_VideoController WHERE PNPDeviceID LIKE 'PCI%%VEN_1002%%' AND Name = '%ls'",
                  gpu.WideName);
    FloorRows rows(wmi, wql);
    while (rows.Next()) {
        ReadRow(rows, gpu, opencl, wmi, registry);
    }
}

void ReadGpus(const Adl& adl, const Adlx& adlx, HMODULE opencl, FloorWmi& wmi)
{
    AdlxPtr<IADLXGPUList> gpus;
    gpus.Receive([&](auto received) { return adlx.System->GetGPUs(received); });
    AdapterRegistry registry;
    for (uint32_t index = 0; index < gpus->Size(); ++index) {
        AdlxPtr<IADLXGPU> object;
        object.Receive([&](auto received) { return gpus->At_GPUList(index, received); });
        Gpu gpu;
        ReadIdentity(*object, adlx, gpu);
        AdlxPtr<IADLXPerformanceMonitoringServices> monitoring;
        monitoring.Receive([&](auto received) { return adlx.System->GetPerformanceMonitoringServices(received); });
        ReadAdl(adl, gpu.Adapter);
        ReadMetrics(*monitoring, *object, adl, gpu.Adapter);
        ReadRows(gpu, opencl, wmi, registry);
    }
}

} // namespace

void RunAmdFloor(FloorWmi& wmi)
{
    const auto opencl = LoadOpenCl();
    Adl adl;
    if (adl.Create) {
        adl.Create(&Allocate, 1, &adl.Context, 1);
    }
    FloorRows bios(wmi, L"SELECT SerialNumber FROM Win32_Bios");
    bios.Next();
    bios.Read(L"SerialNumber");
    if (!adl.Context) {
        return;
    }
    Adlx adlx;
    Start(adlx, adl.Context);
    ReadGpus(adl, adlx, opencl.get(), wmi);
    adlx.Terminate();
    adlx.Module.reset();
    adl.Destroy(adl.Context);
}

} // namespace orvel::bench
