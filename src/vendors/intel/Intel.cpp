#include "vendors/intel/Intel.h"

#include "formulas/MemoryBandwidth.h"
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
#include "vendors/intel/IntelFillRate.h"
#include "vendors/intel/IntelTexts.h"

namespace orvel::shared::enumeration {

namespace {

// The steps of QueryInfo log under its name.
constexpr char queryInfo[] = "orvel::shared::enumeration::Intel::QueryInfo";

} // namespace

void Intel::QueryInfo(GraphicCardList& list)
{
    wmi::WMIClient client(wmiNamespace);
    Sources sources;
    if (client.Query(biosQuery) != 0) {
        PLOGE << "Failed to get SerialNumber from Win32_Bios";
        return;
    }
    client.GetNext();
    ReadText(client, L"SerialNumber", sources.SerialNumber);

    if (client.Query(ToUtf16(IntelAdapterQuery()).c_str()) != 0) {
        PLOGE << "Failed to get Win32_VideoController fields from WMI";
        return;
    }
    while (client.GetNext()) {
        list.Append(MakeRecord(ReadAdapter(client, sources)));
    }
}

// The sources are queried in a fixed order, which is also the order of the log lines.
GraphicCardProperties Intel::ReadAdapter(wmi::WMIClient& client, Sources& sources) const
{
    GraphicCardProperties card;
    card.Manufacturer = "Intel";
    card.GraphicsCardSn = sources.SerialNumber;
    const PnpDeviceId id = ReadIdentity(client, sources, card);
    ReadFillRates(sources.OpenCl, id.Vendor, card);
    ReadClocksAndMemory(client, sources, id, card);
    ReadCommonProperties(client, card);
    return card;
}

PnpDeviceId Intel::ReadIdentity(wmi::WMIClient& client, Sources& sources, GraphicCardProperties& card) const
{
    PnpDeviceId id;
    std::string pnpDeviceId;
    if (!ReadText(client, L"PNPDeviceID", pnpDeviceId) || pnpDeviceId.empty()) {
        ORVEL_LOG_AS(plog::warning, queryInfo) << "Failed to get PNPDeviceID from WMI";
    } else {
        id = ParsePnpDeviceId(pnpDeviceId);
    }
    card.DeviceId = id.Device;
    card.SubsystemId = id.Subsystem;
    card.BusId = static_cast<uint32_t>(GetBusIdFromRegistry(id, sources.Registry));
    if (!ReadText(client, L"Name", card.CardName)) {
        ORVEL_LOG_AS(plog::warning, queryInfo) << "Failed to get Card Name from WMI";
    }
    card.ChipName = IntelChipName(card.CardName);
    return id;
}

void Intel::ReadFillRates(const OpenCLWrapper& opencl, const std::string& vendorId, GraphicCardProperties& card) const
{
    const auto ask = [&](cl_device_info param) { return opencl.GetDeviceInfoByName(card.CardName, param, vendorId); };

    const double pixelClock = ToDouble(ask(CL_DEVICE_MAX_CLOCK_FREQUENCY));
    const int32_t pixelArguments = ToInt(ask(CL_DEVICE_MAX_CONSTANT_ARGS));
    card.PixelFillRate = IntelFillRate(pixelClock, GetTotalWidth(), pixelArguments, 1);

    const double textureClock = ToDouble(ask(CL_DEVICE_MAX_CLOCK_FREQUENCY));
    const int32_t factor = TransferFactor(GetMemoryType());
    const int32_t textureArguments = ToInt(ask(CL_DEVICE_MAX_CONSTANT_ARGS));
    card.TextureFillRate = IntelFillRate(textureClock, GetTotalWidth(), textureArguments, factor);
}

void Intel::ReadClocksAndMemory(wmi::WMIClient& client, Sources& sources, const PnpDeviceId& id,
                                GraphicCardProperties& card) const
{
    const auto ask = [&](cl_device_info param) {
        return sources.OpenCl.GetDeviceInfoByName(card.CardName, param, id.Vendor);
    };

    std::string adapterDacType;
    ReadText(client, L"AdapterDACType", adapterDacType);
    card.GpuType = IntelGpuType(adapterDacType);
    card.GpuClockMax = ToFloat(ask(CL_DEVICE_MAX_CLOCK_FREQUENCY));
    card.MemoryClockMax = GetMemorySpeed();
    card.MemoryBoostClock = ToFloat(ask(CL_DEVICE_MAX_CLOCK_FREQUENCY)); // Intended: repeats the GPU's clock.

    std::string adapterRam;
    const bool hasAdapterRam = ReadText(client, L"AdapterRAM", adapterRam);
    card.MemorySize = static_cast<uint32_t>(ToInt(hasAdapterRam ? IntelMemorySize(adapterRam) : std::string()));
    card.MemorySharedSize = static_cast<uint32_t>(ToInt(GetSharedSystemMemory(id)));

    const float speed = GetMemorySpeed();
    const uint32_t width = GetTotalWidth();
    card.MemoryBandwidth = MemoryBandwidth(speed, width, TransferFactor(GetMemoryType()));
    card.Cores = static_cast<uint32_t>(ToInt(ask(CL_DEVICE_MAX_COMPUTE_UNITS)));
    card.Shaders = static_cast<uint32_t>(ToInt(ask(CL_DEVICE_MAX_COMPUTE_UNITS)));
    if (!ReadText(client, L"DriverDate", card.DriverReleaseDate)) {
        ORVEL_LOG_AS(plog::warning, queryInfo) << "Failed to get Driver Date from WMI";
    }
    card.BiosVersion = GetBiosString(id, sources.Registry);
    card.MemoryType = MemoryTypeName(GetMemoryType());
    card.MemoryBusWidth = GetTotalWidth();
}

void Intel::ReadCommonProperties(wmi::WMIClient& client, GraphicCardProperties& card) const
{
    card.AvailabilityCode = GetAvailabilityCode(client);
    card.ConfigError = GetConfigError(client);
    card.AdapterStatus = GetAdapterStatus(client);
    card.AdapterRam = GetAdapterRam(client);
    card.AdapterName = GetAdapterName(client);
    ReadDriverAndDisplay(client, card);
}

} // namespace orvel::shared::enumeration
