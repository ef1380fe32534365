// Intel's enumerator through the public interface, on the healthy laptop with one deviation each.

#include <algorithm>
#include <doctest/doctest.h>

#include "support/Enumerated.h"
#include "support/NotedRegistry.h"

using namespace orvel::tests;

namespace {

const std::string intel = "Intel::QueryInfo";

/// Checks that Intel's run ends with this exception.
void CheckEnds(const Json& machine, const std::string& reason, size_t recordsBefore = 0)
{
    const Enumerated result = Enumerate(machine);
    CHECK(result.Cards.size() == recordsBefore);
    REQUIRE_FALSE(result.Log.empty());
    const std::string line =
        Line("error", "GraphicCardEnumeration::QueryGraphicCards", "Unexpected error occurred: " + reason);
    CHECK(std::find(result.Log.begin(), result.Log.end(), line) != result.Log.end());
    CHECK(result.Thrown == nullptr);
    for (const auto& [driver, objects] : result.Live) {
        CHECK_MESSAGE(objects == 0, driver << " has live objects");
    }
}

Json& OpenClDevice(Json& machine)
{
    return machine["opencl"]["platforms"][0]["devices"][0];
}

/// A laptop with other values in the first row of WMI's video controllers.
Json LaptopWith(const Json& properties)
{
    Json machine = HealthyLaptop();
    VideoController(machine).update(properties);
    return machine;
}

} // namespace

TEST_CASE("A machine without the OpenCL loader has no Intel records")
{
    Json machine = HealthyLaptop();
    machine.erase("opencl");
    CheckEnds(machine, "Failed to load opencl.dll");
}

TEST_CASE("A failed BIOS query ends Intel's run with one line")
{
    Json machine = HealthyLaptop();
    machine["wmi"]["failures"] = {{{"contains", "Win32_Bios"}, {"nth", 1}, {"status", "0x80041001"}}};
    const Enumerated result = Enumerate(machine);
    CHECK(result.Cards.empty());
    CHECK(result.Log.front() == Line("error", intel, "Failed to get SerialNumber from Win32_Bios"));
}

TEST_CASE("A failed query for the adapters ends Intel's run with one line")
{
    Json machine = HealthyLaptop();
    machine["wmi"]["failures"] = {{{"contains", "VEN_8086"}, {"status", "0x80041001"}}};
    const Enumerated result = Enumerate(machine);
    CHECK(result.Cards.empty());
    CHECK(result.Log.front() == Line("error", intel, "Failed to get Win32_VideoController fields from WMI"));
}

TEST_CASE("A failed WMI connection is a failed BIOS query")
{
    Json machine = HealthyLaptop();
    machine["wmi"]["connect"] = "0x80041003";
    const Enumerated result = Enumerate(machine);
    CHECK(result.Log.front() == Line("error", intel, "Failed to get SerialNumber from Win32_Bios"));
}

TEST_CASE("The serial number is empty if it cannot be read, or the BIOS has no row")
{
    Json unreadable = HealthyLaptop();
    Row(unreadable, "Win32_Bios")["SerialNumber"] = nullptr;
    CHECK(Enumerate(unreadable).Card(0)["GraphicsCardSn"] == "");
    Json without = HealthyLaptop();
    without["wmi"]["classes"]["Win32_Bios"] = Json::array();
    CHECK(Enumerate(without).Card(0)["GraphicsCardSn"] == "");
}

TEST_CASE("Two Intel adapters have the same serial number, that of the machine")
{
    const Enumerated result = Enumerate(Machine("intel-desktop"));
    CHECK(result.Card(0)["GraphicsCardSn"] == "To be filled by O.E.M.");
    CHECK(result.Card(1)["GraphicsCardSn"] == "To be filled by O.E.M.");
}

TEST_CASE("A PNPDeviceID that cannot be read ends the run at the conversion of the empty identifiers")
{
    Json machine = HealthyLaptop();
    VideoController(machine)["PNPDeviceID"] = {{"where", VideoController(machine)["PNPDeviceID"]}, {"status", "0x80041001"}};
    CheckEnds(machine, "invalid stoi argument");
    CHECK(Enumerate(machine).Log.front() == Line("warning", intel, "Failed to get PNPDeviceID from WMI"));
}

TEST_CASE("An empty PNPDeviceID is treated as an unreadable one")
{
    Json machine = HealthyLaptop();
    VideoController(machine)["PNPDeviceID"] = {{"where", VideoController(machine)["PNPDeviceID"]}, {"value", ""}};
    CheckEnds(machine, "invalid stoi argument");
    CHECK(Enumerate(machine).Log.front() == Line("warning", intel, "Failed to get PNPDeviceID from WMI"));
}

TEST_CASE("A PNPDeviceID that ends before the position of an identifier ends the run")
{
    for (const char* text : {"PCI\\VEN", "PCI\\VEN_8086&DEV", "PCI\\VEN_8086&DEV_5917&SUBSYS_2"}) {
        CAPTURE(text);
        Json machine = HealthyLaptop();
        VideoController(machine)["PNPDeviceID"] = {{"where", VideoController(machine)["PNPDeviceID"]}, {"value", text}};
        CheckEnds(machine, "invalid string position");
    }
}

TEST_CASE("A record that was appended before an exception stays")
{
    Json machine = Machine("intel-desktop");
    VideoController(machine, 1)["AdapterRAM"] = nullptr;
    CheckEnds(machine, "invalid stoi argument", 1);
}

TEST_CASE("A card without a name is not found in OpenCL, which ends the run")
{
    const Json machine = LaptopWith({{"Name", nullptr}});
    CheckEnds(machine, "invalid stod argument");
    CHECK(Enumerate(machine).Log.front() == Line("warning", intel, "Failed to get Card Name from WMI"));
}

TEST_CASE("A missing driver date is logged by Intel's enumerator")
{
    const Enumerated result = Enumerate(LaptopWith({{"DriverDate", nullptr}}));
    CHECK(result.Card(0)["DriverReleaseDate"] == "");
    CHECK(result.Log.front() == Line("warning", intel, "Failed to get Driver Date from WMI"));
}

TEST_CASE("AdapterRAM that is missing, 0 or not a number ends the run")
{
    CheckEnds(LaptopWith({{"AdapterRAM", nullptr}}), "invalid stoi argument");
    CheckEnds(LaptopWith({{"AdapterRAM", 0}}), "invalid stoi argument");
    CheckEnds(LaptopWith({{"AdapterRAM", "much"}}), "invalid stoll argument");
    CheckEnds(LaptopWith({{"AdapterRAM", "99999999999999999999"}}), "stoll argument out of range");
}

TEST_CASE("AdapterRAM above 2 GiB is a negative number in WMI, and is read as unsigned")
{
    const Enumerated result = Enumerate(LaptopWith({{"AdapterRAM", 4293918720U}}));
    CHECK(result.Card(0)["MemorySize"] == 4095);
    CHECK(result.Card(0)["AdapterRam"] == 4095);
}

TEST_CASE("A GPU type that is not a word is empty")
{
    CHECK(Enumerate(LaptopWith({{"AdapterDACType", "Internal DAC(400MHz)"}})).Card(0)["GpuType"] == "");
    CHECK(Enumerate(LaptopWith({{"AdapterDACType", nullptr}})).Card(0)["GpuType"] == "");
    CHECK(Enumerate(LaptopWith({{"AdapterDACType", "Integrated RAMDAC"}})).Card(0)["GpuType"] == "Integrated RAMDAC");
}

TEST_CASE("An availability that cannot be read ends the run, because it has no name; a configuration error does not")
{
    CheckEnds(LaptopWith({{"Availability", nullptr}}), "invalid unordered_map<K, T> key");
    CheckEnds(LaptopWith({{"Availability", 22}}), "invalid unordered_map<K, T> key");
    CheckEnds(LaptopWith({{"ConfigManagerErrorCode", 32}}), "invalid unordered_map<K, T> key");
    CHECK(Enumerate(LaptopWith({{"ConfigManagerErrorCode", nullptr}})).Card(0)["ConfigErrorStatus"] ==
          "DeviceWorkingProperly");
    CHECK(Enumerate(LaptopWith({{"ConfigManagerErrorCode", 22}})).Card(0)["ConfigErrorStatus"] == "DeviceDisabled");
}

TEST_CASE("Memory type 26 has half the bandwidth and twice the texture fill rate of type 24")
{
    Json machine = HealthyLaptop();
    MemoryModule(machine)["SMBIOSMemoryType"] = 24;
    const Enumerated result = Enumerate(machine);
    CHECK(result.Card(0)["MemoryBandwidth"] == 12.8);
    CHECK(result.Card(0)["TextureFillRate"] == 9.2);
    CHECK(result.Card(0)["MemoryType"] == "DDR3");
}

TEST_CASE("A memory type without a transfer factor ends the run")
{
    for (const uint32_t type : {12U, 16U, 34U}) {
        CAPTURE(type);
        Json machine = HealthyLaptop();
        MemoryModule(machine)["SMBIOSMemoryType"] = type;
        CheckEnds(machine, "Argument out of range");
    }
}

TEST_CASE("Without memory modules the memory type is unknown, and clock, bandwidth and fill rates are 0")
{
    Json machine = HealthyLaptop();
    machine["wmi"]["classes"]["Win32_PhysicalMemory"] = Json::array();
    const Enumerated result = Enumerate(machine);
    CHECK(result.Card(0)["PixelFillRate"] == 0.0);
    CHECK(result.Card(0)["TextureFillRate"] == 0.0);
    CHECK(result.Card(0)["MemoryBandwidth"] == 0.0);
    CHECK(result.Card(0)["MemoryClockMax"] == 0.0);
    CHECK(result.Card(0)["MemoryBusWidth"] == 0);
    CHECK(result.Card(0)["MemoryType"] == "UNKNOWN");
}

TEST_CASE("QueryGraphicCards throws the status of a failed query for the memory modules")
{
    for (const char* query : {"SELECT TotalWidth", "SELECT SMBIOSMemoryType", "SELECT Speed"}) {
        CAPTURE(query);
        Json machine = HealthyLaptop();
        machine["wmi"]["failures"] = {{{"contains", query}, {"status", "0x80041032"}}};
        const Enumerated result = Enumerate(machine);
        CHECK(result.Thrown == Json{{"type", "long"}, {"value", static_cast<int32_t>(0x80041032)}});
        CHECK(result.Cards.empty());
    }
}

TEST_CASE("OpenCL numbers that are missing end the run at their conversion")
{
    for (const char* parameter : {"CL_DEVICE_MAX_COMPUTE_UNITS", "CL_DEVICE_MAX_CONSTANT_ARGS"}) {
        CAPTURE(parameter);
        Json machine = HealthyLaptop();
        OpenClDevice(machine).erase(parameter);
        CheckEnds(machine, "invalid stoi argument");
    }
    Json machine = HealthyLaptop();
    OpenClDevice(machine)["CL_DEVICE_MAX_COMPUTE_UNITS"] = 4294967295U;
    CheckEnds(machine, "stoi argument out of range");
}

TEST_CASE("The fill rates are 0 if the device reports no constant arguments")
{
    Json machine = HealthyLaptop();
    OpenClDevice(machine)["CL_DEVICE_MAX_CONSTANT_ARGS"] = 0;
    const Enumerated result = Enumerate(machine);
    CHECK(result.Card(0)["PixelFillRate"] == 0.0);
    CHECK(result.Card(0)["TextureFillRate"] == 0.0);
}

TEST_CASE("A chip name that matches the pattern is the cleaned card name")
{
    Json machine = LaptopWith({{"Name", "Intel HD Graphics 4000"}});
    OpenClDevice(machine)["CL_DEVICE_NAME"] = "Intel HD Graphics 4000";
    CHECK(Enumerate(machine).Card(0)["ChipName"] == " HD Gaphics 4000");
}

TEST_CASE("An adapter that DXGI does not list shares no memory, and a missing DXGI ends the run")
{
    Json unlisted = HealthyLaptop();
    unlisted["dxgi"]["adapters"][0]["SubSysId"] = 1;
    CHECK(Enumerate(unlisted).Card(0)["MemorySharedSize"] == 0);
    Json without = HealthyLaptop();
    without.erase("dxgi");
    CheckEnds(without, "invalid stoi argument");
}

namespace {

/// A shortened trace of Intel's run: WMI queries, properties read, OpenCL queries of its device, DXGI, registry keys and log
/// lines. Reads of the same property from several memory modules appear once.
std::vector<std::string> InShort(const std::vector<std::string>& events)
{
    std::vector<std::string> calls;
    for (const std::string& call : events) {
        if (call.find("NvapiClient") != std::string::npos) {
            break; // NVIDIA's run begins with a line about the missing driver
        }
        const bool isProperty = call.starts_with("wmi get") && !(call == "wmi get Speed" && calls.back() == call);
        const bool isAnswer = call.starts_with("opencl clGetDeviceInfo") && !call.ends_with("0x102B") &&
                              !call.ends_with("0x1001") && calls.back() != call; // one call for the size, one for the value
        if (call.starts_with("wmi query") || isProperty || isAnswer || call.starts_with("dxgi Create") ||
            call.starts_with("dwm") || call.starts_with("registry") || call.starts_with("error") ||
            call.starts_with("warning")) {
            calls.push_back(call);
        }
        if (call == "opencl clGetPlatformIDs" && !calls.back().starts_with("opencl next")) {
            calls.push_back("opencl next");
        }
    }
    std::erase(calls, "opencl next");
    return calls;
}

std::vector<std::string> OrderOf(const Json& machine)
{
    const NotedRegistry registry(::GetModuleHandleW(L"orvel-graphic-cards-enumeration.dll"));
    return InShort(Enumerate(machine).Events);
}

const std::string pciKey = "registry SYSTEM\\CurrentControlSet\\Enum\\PCI\\";
const std::string videoKey = "registry SYSTEM\\CurrentControlSet\\Control\\Video";
const std::string askedClock = "opencl clGetDeviceInfo 0x100C";
const std::string askedArguments = "opencl clGetDeviceInfo 0x1021";
const std::string askedUnits = "opencl clGetDeviceInfo 0x1002";

/// A laptop that only reports the values without which the run would end. Card and OpenCL device both have an empty name, so
/// they match. OpenCL's second platform fails to list its devices.
Json SilentLaptop()
{
    Json machine = HealthyLaptop();
    const Json id = VideoController(machine)["PNPDeviceID"];
    // The memory size converts from any text, AdapterRam from 32 bits only.
    VideoController(machine) = {{"Availability", 3}, {"AdapterRAM", "4294967296"}, {"PNPDeviceID", id}};
    Row(machine, "Win32_Bios") = Json::object();
    machine["wmi"]["classes"]["Win32_PhysicalMemory"] = Json::array();
    machine.erase("registry");
    machine["dxgi"]["adapters"] = Json::array();
    OpenClDevice(machine)["CL_DEVICE_NAME"] = "";
    machine["opencl"]["platforms"].push_back({{"devices_count", -30}, {"devices", Json::array()}});
    return machine;
}

std::string Unread(const std::string& getter, const std::string& text)
{
    return Line("warning", "BaseGraphicCard::" + getter, text);
}

} // namespace

TEST_CASE("The platform is called in a fixed order, and each WMI query is sent once")
{
    const std::string deviceKey = pciKey + "VEN_8086&DEV_5917&SUBSYS_225D17AA&REV_07";
    const std::vector<std::string> expected = {
        "wmi query SELECT SerialNumber FROM Win32_Bios",
        "wmi get SerialNumber",
        "wmi query SELECT * FROM Win32_VideoController WHERE PNPDeviceID LIKE 'PCI%VEN_8086%'",
        "wmi get PNPDeviceID",
        pciKey,
        deviceKey,
        deviceKey + "\\3&11583659&0&10",
        "wmi get Name",
        askedClock,
        askedArguments,
        "wmi query SELECT TotalWidth FROM Win32_PhysicalMemory",
        "wmi query SELECT SMBIOSMemoryType FROM Win32_PhysicalMemory", // together with the first of the three
        "wmi query SELECT Speed FROM Win32_PhysicalMemory",
        "wmi get TotalWidth",
        askedClock,
        "wmi get SMBIOSMemoryType",
        askedArguments,
        "wmi get TotalWidth",
        "wmi get AdapterDACType",
        askedClock,
        "wmi get Speed",
        askedClock,
        "wmi get AdapterRAM",
        "dxgi CreateDXGIFactory",
        "wmi get Speed",
        "wmi get TotalWidth",
        "wmi get SMBIOSMemoryType",
        askedUnits,
        askedUnits,
        "wmi get DriverDate",
        videoKey,
        "registry {6C7C7D60-6E6B-11ED-8F2A-806E6F6E6963}",
        "registry 0000",
        "wmi get SMBIOSMemoryType",
        "wmi get TotalWidth",
        "wmi get Availability",
        "wmi get ConfigManagerErrorCode",
        "wmi get Status",
        "wmi get AdapterRAM",
        "wmi get Name",
        "dwm DwmIsCompositionEnabled",
        "wmi get DriverVersion",
        "wmi get CurrentRefreshRate",
        "wmi get CurrentHorizontalResolution",
        "wmi get CurrentVerticalResolution",
        "wmi get ConfigManagerUserConfig",
    };
    CHECK(OrderOf(HealthyLaptop()) == expected);
}

TEST_CASE("If no Intel property can be read, every property logs its line in the fixed order")
{
    const std::string noDevices = Line("error", "OpenCLWrapper::GetDevices", "Failed to get Open CL devices");
    const std::vector<std::string> expected = {
        "wmi query SELECT SerialNumber FROM Win32_Bios",
        "wmi get SerialNumber",
        "wmi query SELECT * FROM Win32_VideoController WHERE PNPDeviceID LIKE 'PCI%VEN_8086%'",
        "wmi get PNPDeviceID",
        pciKey,
        Line("warning", "GetBusIdFromRegistry", "Failed to get Bus ID from registry. Error code: 2"),
        "wmi get Name",
        Line("warning", intel, "Failed to get Card Name from WMI"),
        noDevices, // pixel fill rate
        askedClock,
        noDevices,
        askedArguments,
        "wmi query SELECT TotalWidth FROM Win32_PhysicalMemory",
        "wmi query SELECT SMBIOSMemoryType FROM Win32_PhysicalMemory",
        "wmi query SELECT Speed FROM Win32_PhysicalMemory",
        noDevices, // texture fill rate
        askedClock,
        noDevices,
        askedArguments,
        "wmi get AdapterDACType",
        noDevices, // the GPU's clock and the memory's boost clock
        askedClock,
        noDevices,
        askedClock,
        "wmi get AdapterRAM",
        "dxgi CreateDXGIFactory",
        noDevices, // cores and shaders
        askedUnits,
        noDevices,
        askedUnits,
        "wmi get DriverDate",
        Line("warning", intel, "Failed to get Driver Date from WMI"),
        videoKey,
        "wmi get Availability",
        "wmi get ConfigManagerErrorCode",
        Unread("GetConfigError", "Failed to get ConfigManagerErrorCode from WMI"),
        "wmi get Status",
        Unread("GetAdapterStatus", "Failed to get Status from WMI"),
        "wmi get AdapterRAM",
        Unread("GetAdapterRam", "Failed to get AdapterRAM from WMI"),
        "wmi get Name",
        Unread("GetAdapterName", "Failed to get Adapter Name from WMI"),
        "dwm DwmIsCompositionEnabled",
        "wmi get DriverVersion",
        Unread("GetDriverVersion", "Failed to get driver version from WMI"),
        "wmi get CurrentRefreshRate",
        Unread("GetCurrentRefreshRate", "Failed to get current refresh rate from WMI"),
        "wmi get CurrentHorizontalResolution",
        Unread("GetCurrentResolution", "Failed to get current resolution from WMI."),
        "wmi get ConfigManagerUserConfig",
        Unread("GetUserConfig", "Failed to get ConfigManagerUserConfig from WMI"),
    };
    CHECK(OrderOf(SilentLaptop()) == expected);
}

TEST_CASE("opencl.dll is loaded before the first WMI query")
{
    Json machine = HealthyLaptop();
    machine.erase("opencl");
    CHECK(Only(Enumerate(machine).Trace, "wmi query").empty());
}

TEST_CASE("Virtual and remote adapters never become records")
{
    const Enumerated result = Enumerate(Machine("remote-session"));
    REQUIRE(result.Cards.size() == 1);
    CHECK(result.Card(0)["CardName"] == "Intel(R) UHD Graphics 620");
}
