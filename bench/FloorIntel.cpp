#include "Floor.h"

#include <cwchar>

#include "FloorOpenCl.h"
#include "FloorRegistry.h"
#include "FloorSystem.h"
#include "FloorWmi.h"

namespace orvel::bench {

namespace {

constexpr cl_uint intelVendor = 0x8086;

/// What the calls of one adapter hang on.
struct Adapter {
    char DeviceId[5] = "";
    wchar_t WideDeviceId[5] = L"";
    char Name[256] = "";
};

void ReadIdentity(const FloorRows& row, Adapter& adapter)
{
    Value pnpDeviceId;
    row.Read(L"PNPDeviceID", pnpDeviceId);
    for (int index = 0; index < 4; ++index) {
        adapter.WideDeviceId[index] = pnpDeviceId.Text()[17 + index];
        adapter.DeviceId[index] = static_cast<char>(adapter.WideDeviceId[index]);
    }
    ReadBusNumber("8086", adapter.DeviceId);
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

void ReadClocksAndMemory(const FloorRows& row, HMODULE opencl, FloorWmi& wmi, const Adapter& adapter)
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
    ReadBiosText(L"8086", adapter.WideDeviceId);
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
    FloorRows rows(wmi, L"SELECT * FROM Win32_VideoController WHERE PNPDeviceID LIKE 'PCI%VEN_8086%'");
    while (rows.Next()) {
        Adapter adapter;
        ReadIdentity(rows, adapter);
        ReadFillRates(opencl.get(), wmi, adapter);
        ReadClocksAndMemory(rows, opencl.get(), wmi, adapter);
        ReadCommonProperties(rows);
    }
}

} // namespace orvel::bench
