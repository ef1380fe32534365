// How a GPU is read: ADLX provides the object and its texts; the ADL adapter index selects the values of ADL, the name
// selects the WMI rows and the OpenCL device, and the identifiers select the registry keys and the DXGI adapter.

#include "vendors/amd/AMD.h"

#include <cstdlib>

#include "formulas/NumberText.h"
#include "formulas/StatusNames.h"
#include "formulas/VideoControllerQuery.h"
#include "formulas/WmiQueries.h"
#include "platform/Log.h"
#include "platform/TextEncoding.h"
#include "system/DisplayRegistry.h"
#include "system/PciBusNumber.h"
#include "system/SharedSystemMemory.h"
#include "system/SystemMemory.h"
#include "system/WmiNamespace.h"
#include "system/WmiText.h"
#include "vendors/amd/ADLXHelper.h"

namespace orvel::shared::enumeration {

namespace {

// The steps of QueryInfo log under its name. Intended: every line is an error, including success.
constexpr char queryInfo[] = "orvel::shared::enumeration::AMD::QueryInfo";

/// Frees memory that ADL got from its allocation callback.
void __stdcall FreeAdlMemory(void** buffer)
{
    if (buffer && *buffer) {
        std::free(*buffer);
        *buffer = nullptr;
    }
}

/// A text of a GPU; "" if the call fails.
std::string TextOf(IADLXGPU& gpu, ADLX_RESULT (__stdcall IADLXGPU::*read)(const char**))
{
    const char* text = nullptr;
    const bool isRead = Succeeded((gpu.*read)(&text));
    return isRead && text ? std::string(text) : std::string();
}

/// A number that an ADLX call writes; 0 if the call fails.
template <typename Number, typename Call>
Number NumberOf(Call call)
{
    Number number = 0;
    return Succeeded(call(&number)) ? number : 0;
}

} // namespace

void AMD::QueryInfo(GraphicCardList& list)
{
    wmi::WMIClient client(wmiNamespace);
    const OpenCLWrapper opencl;
    ADLWrapper adl;
    if (client.Query(biosQuery) != 0) {
        PLOGE << "Failed to get SerialNumber from Win32_Bios";
        return;
    }
    Sources sources{client, opencl, adl, {}, {}};
    client.GetNext();
    ReadText(client, L"SerialNumber", sources.SerialNumber);

    try {
        if (InitializeAdlx(adl) && ReadGpus(sources, list) == Walk::QueryFailed) {
            return; // Intended: ADLX stays loaded.
        }
    } catch (...) {
        Adlx().Terminate(); // before the ADL context that it uses is destroyed
        throw;
    }
    Adlx().Terminate();
    adl.Destroy(); // Intended: the destructor does it again, and logs a second line.
}

bool AMD::InitializeAdlx(const ADLWrapper& adl) const
{
    if (adl.GetContext()) {
        if (Succeeded(Adlx().InitializeWithCallerAdl(adl.GetContext(), &FreeAdlMemory))) {
            ORVEL_LOG_AS(plog::error, queryInfo) << "ADLX initialized successfully";
            return true;
        }
        ORVEL_LOG_AS(plog::error, queryInfo) << "ADLX initialization failed";
    }
    ORVEL_LOG_AS(plog::error, queryInfo) << "Failed to get 3DSettings services";
    return false;
}

AMD::Walk AMD::ReadGpus(Sources& sources, GraphicCardList& list) const
{
    AdlxPtr<IADLXGPUList> gpus;
    IADLXSystem* system = Adlx().GetSystemServices();
    if (!system || !gpus.Receive([&](IADLXGPUList** received) { return system->GetGPUs(received); })) {
        return Walk::Finished;
    }
    for (uint32_t index = 0; index < gpus->Size(); ++index) { // the list may shrink during the loop
        AdlxPtr<IADLXGPU> gpu;
        if (!gpu.Receive([&](IADLXGPU** received) { return gpus->At_GPUList(index, received); })) {
            continue;
        }
        AdlxPtr<IADLXPerformanceMonitoringServices> services; // held until the GPU's rows are read
        if (ReadRows(ReadGpu(*gpu, services, sources), sources, list) == Walk::QueryFailed) {
            return Walk::QueryFailed;
        }
    }
    return Walk::Finished;
}

AMD::Gpu AMD::ReadGpu(IADLXGPU& gpu, AdlxPtr<IADLXPerformanceMonitoringServices>& services, const Sources& sources) const
{
    Gpu result;
    GraphicCardProperties& card = result.Card;
    card.Manufacturer = "AMD";
    card.GraphicsCardSn = sources.SerialNumber;
    result.Id.Vendor = TextOf(gpu, &IADLXGPU::VendorId);
    card.CardName = TextOf(gpu, &IADLXGPU::Name);
    card.SubsystemId = result.Id.Subsystem = SubsystemOf(TextOf(gpu, &IADLXGPU::PNPString));
    card.DeviceId = result.Id.Device = TextOf(gpu, &IADLXGPU::DeviceId);
    card.MemorySize = NumberOf<uint32_t>([&](uint32_t* mebibytes) { return gpu.TotalVRAM(mebibytes); });
    IADLMapping* mapping = Adlx().GetAdlMapping();
    const auto adapter = NumberOf<int32_t>(
        [&](int32_t* index) { return mapping ? mapping->AdlAdapterIndexFromADLXGPU(&gpu, index) : ADLX_FAIL; });

    const bool hasServices = services.Receive([](IADLXPerformanceMonitoringServices** received) {
        return Adlx().GetSystemServices()->GetPerformanceMonitoringServices(received);
    });
    ReadAdl(sources.Adl, adapter, card);
    if (hasServices) {
        sources.Adl.GetPixelFillRate(*services, gpu, adapter);
    }
    return result;
}

void AMD::ReadAdl(const ADLWrapper& adl, int adapter, GraphicCardProperties& card) const
{
    card.Cores = adl.GetCores(adapter);
    card.Shaders = adl.GetCores(adapter);
    card.AmdCrossfire = adl.GetCrossfire(adapter);
    card.PciLanes = adl.GetPciLanes(adapter);
    card.EccStatus = adl.GetEccStatus(adapter);
    card.EccSingleBitErrors = adl.GetEccSingleBitErrors(adapter);
    card.EccDoubleBitErrors = adl.GetEccDoubleBitErrors(adapter);
}

AMD::Walk AMD::ReadRows(const Gpu& gpu, Sources& sources, GraphicCardList& list) const
{
    wmi::WMIClient& client = sources.Client;
    if (client.Query(ToUtf16(AmdAdapterQuery(gpu.Card.CardName)).c_str()) != 0) {
        ORVEL_LOG_AS(plog::error, queryInfo) << "Failed to get Win32_VideoController fields from WMI";
        return Walk::QueryFailed;
    }
    while (client.GetNext()) {
        GraphicCardProperties card = gpu.Card;
        ReadStatusAndDisplay(client, card);
        ReadMachine(gpu, sources, card);
        if (!ReadText(client, L"DriverDate", card.DriverReleaseDate)) {
            ORVEL_LOG_AS(plog::warning, queryInfo) << "Failed to get Driver Date from WMI";
        }
        card.BiosVersion = GetBiosString(gpu.Id, sources.Registry);
        card.AdapterName = GetAdapterName(client);
        card.AdapterRam = GetAdapterRam(client);
        card.AdapterStatus = GetAdapterStatus(client);
        list.Append(MakeRecord(card));
    }
    return Walk::Finished;
}

void AMD::ReadStatusAndDisplay(wmi::WMIClient& client, GraphicCardProperties& card) const
{
    card.AvailabilityCode = GetAvailabilityCode(client);
    card.AvailabilityStatus = AvailabilityName(card.AvailabilityCode);
    card.ConfigError = GetConfigError(client);
    card.ConfigErrorStatus = ConfigErrorName(static_cast<int32_t>(card.ConfigError));
    card.UserConfig = GetUserConfig(client);
    card.CurrentResolution = GetCurrentResolution(client);
    card.CurrentRefreshRate = GetCurrentRefreshRate(client);
    card.DriverVersion = GetDriverVersion(client);
    card.IsAeroEnabled = IsAeroEnabled();
}

// Intended: memory clock, type and bandwidth are those of the machine's memory.
void AMD::ReadMachine(const Gpu& gpu, Sources& sources, GraphicCardProperties& card) const
{
    card.BusId = static_cast<uint32_t>(GetBusIdFromRegistry(gpu.Id, sources.Registry));
    card.ChipName = sources.OpenCl.GetDeviceInfoByName(card.CardName, CL_DEVICE_NAME, gpu.Id.Vendor);
    card.MemoryClockMax = GetMemorySpeed();
    card.MemorySharedSize = static_cast<uint32_t>(ToInt(GetSharedSystemMemory(gpu.Id)));
    card.MemoryType = MemoryTypeNameOrEmpty(GetMemoryType());
    card.MemoryBandwidth = GetMemoryBandwidth();
}

} // namespace orvel::shared::enumeration
