#include "Floor.h"

#include <cwchar>

#include "FloorOpenCl.h"
#include "FloorSystem.h"
#include "FloorWmi.h"
#include "system/DisplayRegistry.h"
#include "system/PciBusNumber.h"

namespace orvel::bench {

namespace {

using namespace shared::enumeration;

constexpr cl_uint intelVendor = 0x8086;

/// The values of one adapter that later calls need.
struct Adapter {
    char DeviceId[5] = "";
    char Name[256] = "";
};

void ReadIdentity(const FloorRows& row, AdapterRegistry& registry, Adapter& adapter)
{
    Value pnpDeviceId;
    row.Read(L"PNPDeviceID", pnpDeviceId);
    for (int index = 0; index < 4; ++index) {
        adapter.DeviceId[index] = static_cast<char>(pnpDeviceId.Text()[17 + index]);
    }
    GetBusIdFromRegistry({"8086", adapter.DeviceId, ""}, registry);
    Value name;
    row.Read(L"Name", name);
    ::WideCharToMultiByte(CP_UTF8, 0, name.Text(), -1, adapter.Name, sizeof(adapter.Name), nullptr, nullptr);
}

void ReadFillRates(HMODULE opencl, FloorWmi& wmi, const Adapter& adapter)
{
    ReadDevice(opencl, adapter.Name, intelVendor, CL_DEVICE_MAX_CLOCK_FREQUENCY);
    ReadDevice(opencl, adapter.Name, intelVendor, CL_DEVICE_MAX_CONSTANT_ARGS);
    ReadTotalWidth(wmi);
    ReadDevice(opencl, adapter.Name, intelVendor, CL_DEVICE_MAX_CLOCK_FREQUENCY);
    ReadMemoryType(wmi);
    ReadDevice(opencl, adapter.Name, intelVendor, CL_DEVICE_MAX_CONSTANT_ARGS);
    ReadTotalWidth(wmi);
}

void ReadClocksAndMemory(const FloorRows& row, HMODULE opencl, FloorWmi& wmi, AdapterRegistry& registry,
                         const Adapter& adapter)
{
    row.Read(L"AdapterDACType");
    ReadDevice(opencl, adapter.Name, intelVendor, CL_DEVICE_MAX_CLOCK_FREQUENCY);
    ReadMemorySpeed(wmi);
    ReadDevice(opencl, adapter.Name, intelVendor, CL_DEVICE_MAX_CLOCK_FREQUENCY);
    row.Read(L"AdapterRAM");
    ReadSharedMemory();
    ReadMemorySpeed(wmi);
    ReadTotalWidth(wmi);
    ReadMemoryType(wmi);
    ReadDevice(opencl, adapter.Name, intelVendor, CL_DEVICE_MAX_COMPUTE_UNITS);
    ReadDevice(opencl, adapter.Name, intelVendor, CL_DEVICE_MAX_COMPUTE_UNITS);
    row.Read(L"DriverDate");
    GetBiosString({"8086", adapter.DeviceId, ""}, registry);
    ReadMemoryType(wmi);
    ReadTotalWidth(wmi);
}

void ReadCommonProperties(const FloorRows& row)
{
    for (const wchar_t* property : {L"Availability", L"ConfigManagerErrorCode", L"Status", L"AdapterRAM", L"Name"}) {
        row.Read(property);
    }
    ReadComposition();
    for (const wchar_t* property : {L"DriverVersion", L"CurrentRefreshRate", L"CurrentHorizontalResolution",
                                    L"CurrentVerticalResolution", L"ConfigManagerUserConfig"}) {
        row.Read(property);
    }
}

} // namespace

void RunIntelFloor(FloorWmi& wmi)
{
    const auto opencl = LoadOpenCl();
    {
        FloorRows bios(wmi, L"SELECT SerialNumber FROM Win32_Bios");
        bios.Next();
        bios.Read(L"SerialNumber");
    }
    shared::enumeration::AdapterRegistry registry;
    FloorRows rows(wmi, L"SELECT * FROM Win32_VideoController WHERE PNPDeviceID LIKE 'PCI%VEN_8086%'");
    while (rows.Next()) {
        Adapter adapter;
        ReadIdentity(rows, registry, adapter);
        ReadFillRates(opencl.get(), wmi, adapter);
        ReadClocksAndMemory(rows, opencl.get(), wmi, registry, adapter);
        ReadCommonProperties(rows);
    }
}

} // namespace orvel::bench
