#include "Machines.h"

#include <cstdio>
#include <fstream>
#include <stdexcept>

namespace orvel::bench {

namespace {

using nlohmann::json;

json ReadMachine(const std::string& folder, const std::string& name)
{
    std::ifstream file(folder + "/" + name + ".json");
    if (!file) {
        throw std::runtime_error("no such machine: " + folder + "/" + name + ".json");
    }
    return json::parse(file);
}

std::string Text(const char* format, unsigned int number)
{
    char text[256];
    std::snprintf(text, sizeof(text), format, number);
    return text;
}

void AddAdapter(json& machine, const json& laptop, unsigned int index)
{
    const unsigned int device = 0x5900 + index;
    const std::string id = Text("VEN_8086&DEV_%04X&SUBSYS_225D17AA&REV_07", device);
    const std::string instance = Text("3&11583659&0&%02X", 0x10 + index);

    json row = laptop["wmi"]["classes"]["Win32_VideoController"][0];
    row["PNPDeviceID"] = "PCI\\" + id + "\\" + instance;
    machine["wmi"]["classes"]["Win32_VideoController"].push_back(row);

    json& registry = machine["registry"];
    registry["SYSTEM\\CurrentControlSet\\Enum\\PCI\\" + id + "\\" + instance] = {
        {"LocationInformation", Text("PCI bus %%1, device %%2, function %%3;(%u,0,0)", index)}};
    registry["SYSTEM\\CurrentControlSet\\Control\\Video\\{6C7C7D60-6E6B-11ED-8F2A-" + Text("806E6F6E%04X}\\0000", index)] = {
        {"MatchingDeviceId", Text("pci\\ven_8086&dev_%04X", device)},
        {"HardwareInformation.BiosString", "Intel Video BIOS"}};

    json adapter = laptop["dxgi"]["adapters"][0];
    adapter["DeviceId"] = device;
    machine["dxgi"]["adapters"].push_back(adapter);
    machine["opencl"]["platforms"][0]["devices"].push_back(laptop["opencl"]["platforms"][0]["devices"][0]);
}

} // namespace

std::vector<Machine> ShippedMachines(const std::string& folder)
{
    return {{"Intel laptop", ReadMachine(folder, "intel-laptop"), 400},
            {"workstation", ReadMachine(folder, "workstation"), 200}};
}

json WithAdapters(const json& laptop, unsigned int count)
{
    json machine = laptop;
    machine["wmi"]["classes"]["Win32_VideoController"] = json::array();
    machine["registry"] = json::object();
    machine["dxgi"]["adapters"] = json::array();
    machine["opencl"]["platforms"][0]["devices"] = json::array();
    for (unsigned int index = 0; index < count; ++index) {
        AddAdapter(machine, laptop, index);
    }
    machine["dxgi"]["adapters"].push_back(laptop["dxgi"]["adapters"][1]); // the software adapter comes last
    return machine;
}

json WithoutRegistry(json machine)
{
    machine.erase("registry");
    return machine;
}

json WithLatency(json machine)
{
    machine["wmi"]["latency_us"] = {{"connect", static_cast<int>(connectionMicroseconds)},
                                    {"query", static_cast<int>(queryMicroseconds)}};
    return machine;
}

} // namespace orvel::bench
