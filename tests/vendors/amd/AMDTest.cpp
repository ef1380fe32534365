// AMD's records of the desktops with one and two Radeons, with one deviation each.

#include <doctest/doctest.h>

#include "AmdRun.h"

using namespace orvel::tests;

namespace {

const std::string radeon = "AMD Radeon RX 6800 XT";
const std::string pnpStart = "PCI\\VEN_1002&DEV_73BF&SUBSYS_";

/// Enumerates a desktop with other values in WMI's row of the card; there must be one record.
Enumerated EnumerateRow(const Json& properties)
{
    Json machine = AmdDesktop();
    VideoController(machine).update(properties);
    const Enumerated result = EnumerateAmd(machine);
    REQUIRE(result.Cards.size() == 1);
    return result;
}

/// The record of a desktop with another value for its ADLX GPU.
Json CardWithGpu(const std::string& key, const Json& value)
{
    Json machine = AmdDesktop();
    AdlxGpu(machine)[key] = value;
    return OnlyCard(machine);
}

/// The record of a desktop whose ADL adapter has another answer for a function.
Json CardWithAdl(const std::string& function, const Json& answer)
{
    Json machine = AmdDesktop();
    AdlAdapter(machine)[function] = answer;
    return OnlyCard(machine);
}

/// A desktop whose card has another name in ADLX and WMI.
Json Renamed(const std::string& name)
{
    Json machine = AmdDesktop();
    AdlxGpu(machine)["Name"] = name;
    VideoController(machine)["Name"] = name;
    return machine;
}

} // namespace

TEST_CASE("Two identical cards have four records, because each GPU matches both rows")
{
    Json machine = AmdTwoCards();
    AdlAdapter(machine, "5")["ADL2_Adapter_Graphic_Core_Info_Get"]["iNumCUs"] = 20;
    const Enumerated result = EnumerateAmd(machine);
    REQUIRE(result.Cards.size() == 4);
    CHECK(MemorySizes(result) == std::vector<uint32_t>{16384, 16384, 16368, 16368});
    for (size_t i = 0; i < 4; ++i) {
        CAPTURE(i);
        CHECK(result.Card(i)["AvailabilityCode"] == (i % 2 == 0 ? 3 : 8));
        CHECK(result.Card(i)["Cores"] == (i < 2 ? 36 * 128 : 20 * 128));
        CHECK(result.Card(i)["BusId"] == 45); // the first device key is used for both
    }
    CHECK(result.Log.front() == adlReady);
    CHECK(result.Log.back() == adlDestroyed);
}

TEST_CASE("Every AMD record has the manufacturer AMD, no pixel fill rate, no SLI and the machine's serial number")
{
    const Enumerated result = EnumerateAmd(AmdTwoCards());
    REQUIRE(result.Cards.size() == 4);
    for (const Json& card : result.Cards) {
        CHECK(card["Manufacturer"] == "AMD");
        CHECK(card["PixelFillRate"] == 0.0);
        CHECK(card["NvidiaSli"] == false);
        CHECK(card["GraphicsCardSn"] == "Default string");
    }
}

TEST_CASE("Shaders always equal cores")
{
    const Json card = CardWithAdl("ADL2_Adapter_Graphic_Core_Info_Get", {{"iNumCUs", 20}, {"iNumPEsPerCU", 64}});
    CHECK(card["Cores"] == 1280);
    CHECK(card["Shaders"] == 1280);
}

TEST_CASE("A graphic core with 0 compute units has 0 cores and 0 shaders")
{
    const Json card = CardWithAdl("ADL2_Adapter_Graphic_Core_Info_Get", {{"iNumCUs", 0}, {"iNumPEsPerCU", 64}});
    CHECK(card["Cores"] == 0);
    CHECK(card["Shaders"] == 0);
}

TEST_CASE("The ECC status is 1 for a successful call with mode 1, and 2 for a failing call with mode 2")
{
    Json machine = AmdDesktop();
    AdlAdapter(machine)["ADL2_Workstation_ECC_Caps"] = 1;
    AdlAdapter(machine)["ADL2_Workstation_ECC_Get"] = {{"current", 1}};
    CHECK(OnlyCard(machine)["EccStatus"] == 1);
    AdlAdapter(machine)["ADL2_Workstation_ECC_Get"] = {{"status", -1}, {"value", {{"current", 2}}}};
    CHECK(OnlyCard(machine)["EccStatus"] == 2);
}

TEST_CASE("ECC errors, bus lanes and CrossFire come from ADL")
{
    const Json errors = CardWithAdl("ADL2_Workstation_ECCData_Get", {{"status", -1}, {"value", {{"iSec", 4}, {"iDed", 3}}}});
    CHECK(errors["EccSingleBitErrors"] == 4);
    CHECK(errors["EccDoubleBitErrors"] == 3);
    const Json lanes =
        CardWithAdl("ADL_Overdrive5_CurrentActivity_Get", {{"status", -2}, {"value", {{"iMaximumBusLanes", 8}}}});
    CHECK(lanes["PciLanes"] == 8);
    CHECK(CardWithAdl("ADL2_Adapter_Crossfire_Get", {{"iSupported", 1}})["AmdCrossfire"] == true);
}

TEST_CASE("A failing call with -1 bus lanes means 0 lanes")
{
    const Json card =
        CardWithAdl("ADL_Overdrive5_CurrentActivity_Get", {{"status", -2}, {"value", {{"iMaximumBusLanes", -1}}}});
    CHECK(card["PciLanes"] == 0);
}

TEST_CASE("Without ADL's function for bus lanes there are 0 lanes")
{
    Json machine = AmdDesktop();
    AdlAdapter(machine)["ADL_Overdrive5_CurrentActivity_Get"] = {{"status", -2}, {"value", {{"iMaximumBusLanes", 8}}}};
    machine["adl"]["missing"] = Json::array({"ADL_Overdrive5_CurrentActivity_Get"});
    CHECK(OnlyCard(machine)["PciLanes"] == 0);
}

TEST_CASE("The chip name is the name of the OpenCL device with the card's name and vendor, else empty")
{
    Json machine = AmdDesktop();
    Json& device = machine["opencl"]["platforms"][0]["devices"][0];
    CHECK(OnlyCard(machine)["ChipName"] == ""); // OpenCL calls it gfx1030
    device["CL_DEVICE_NAME"] = radeon;
    CHECK(OnlyCard(machine)["ChipName"] == radeon);
    device["CL_DEVICE_VENDOR_ID"] = 0x8086;
    CHECK(OnlyCard(machine)["ChipName"] == "");
}

TEST_CASE("A GPU without a matching row has no record")
{
    Json machine = AmdDesktop();
    VideoController(machine)["Name"] = "AMD Radeon RX 6800";
    Enumerated result = EnumerateAmd(machine);
    CHECK(result.Cards.empty());
    CHECK(result.Log == WholeRun({fillRateDone}));
    machine = AmdDesktop();
    VideoController(machine)["PNPDeviceID"] = "PCI\\VEN_10DE&DEV_73BF&SUBSYS_0E3A1002&REV_C1\\6&2F4D2B2&0&00000019";
    result = EnumerateAmd(machine);
    CHECK(result.Cards.empty());
}

TEST_CASE("A GPU with several rows has one record for each")
{
    Json machine = AmdDesktop();
    Json second = VideoController(machine);
    second["Availability"] = 8;
    machine["wmi"]["classes"]["Win32_VideoController"].push_back(second);
    const Enumerated result = EnumerateAmd(machine);
    REQUIRE(result.Cards.size() == 2);
    CHECK(result.Card(0)["AvailabilityStatus"] == "RunningFullPower");
    CHECK(result.Card(1)["AvailabilityCode"] == 8);
    CHECK(result.Log == WholeRun({fillRateDone}));
}

TEST_CASE("A name with characters outside ASCII finds its row")
{
    const std::string name = "AMD Radeon\u2122 \u00b5\u5361";
    CHECK(OnlyCard(Renamed(name))["CardName"] == name);
    CHECK(OnlyCard(Renamed(name))["AdapterName"] == name);
}

TEST_CASE("The subsystem identifier is read from the PNP string, and truncated at the string's end")
{
    CHECK(CardWithGpu("PNPString", pnpStart + "0E3A1002&REV_C1")["SubsystemId"] == "0E3A-1002");
    CHECK(CardWithGpu("PNPString", pnpStart + "0E3A10")["SubsystemId"] == "0E3A-10");
    CHECK(CardWithGpu("PNPString", pnpStart + "0E3A")["SubsystemId"] == "0E3A-"); // 33 characters
}

TEST_CASE("The machine's memory is reported for the card: clock, type and bandwidth")
{
    Json machine = AmdDesktop();
    MemoryModule(machine, 0) = {{"SMBIOSMemoryType", 24}, {"Speed", 2666}, {"TotalWidth", 64}};
    MemoryModule(machine, 1) = {{"SMBIOSMemoryType", 26}, {"Speed", 3200}, {"TotalWidth", 128}};
    const Json card = OnlyCard(machine);
    CHECK(card["MemoryClockMax"] == 1600.0);
    CHECK(card["MemoryType"] == "DDR3");
    CHECK(card["MemoryBandwidth"].get<float>() == doctest::Approx(12.8)); // 64 bits of 1600 MHz
}

TEST_CASE("For a memory type without a name the type is empty and the bandwidth is infinite")
{
    for (const uint32_t type : {12U, 34U}) {
        CAPTURE(type);
        Json machine = AmdDesktop();
        MemoryModule(machine)["SMBIOSMemoryType"] = type;
        const Enumerated result = EnumerateAmd(machine);
        REQUIRE(result.Cards.size() == 1);
        CHECK(result.Card(0)["MemoryType"] == "");
        CHECK(result.Card(0)["MemoryBandwidth"] == "Infinity");
        CHECK(result.Log == WholeRun({fillRateDone, Line("error", "GetMemoryBandwidth", "Error: Argument out of range")}));
    }
}

TEST_CASE("Without memory modules the memory type is unknown, and clock and bandwidth are 0")
{
    Json machine = AmdDesktop();
    machine["wmi"]["classes"]["Win32_PhysicalMemory"] = Json::array();
    const Json card = OnlyCard(machine);
    CHECK(card["MemoryType"] == "UNKNOWN");
    CHECK(card["MemoryClockMax"] == 0.0);
    CHECK(card["MemoryBandwidth"] == 0.0);
}

TEST_CASE("An adapter that DXGI does not list shares no memory")
{
    Json machine = AmdDesktop();
    machine["dxgi"]["adapters"][0]["SubSysId"] = 1;
    CHECK(OnlyCard(machine)["MemorySharedSize"] == 0);
}

TEST_CASE(
    "A device identifier whose case differs from the registry's finds neither bus nor BIOS, but finds the shared memory")
{
    const Json card = CardWithGpu("DeviceId", "73bf");
    CHECK(card["DeviceId"] == "73bf");
    CHECK(card["BusId"] == 0);
    CHECK(card["BiosVersion"] == "");
    CHECK(card["MemorySharedSize"] == 15);
}

TEST_CASE("A missing driver date is logged by AMD's enumerator")
{
    const Enumerated result = EnumerateRow({{"DriverDate", nullptr}});
    CHECK(result.Card(0)["DriverReleaseDate"] == "");
    CHECK(result.Log == WholeRun({fillRateDone, Line("warning", "AMD::QueryInfo", "Failed to get Driver Date from WMI")}));
}

TEST_CASE("Other values of the row that cannot be read are logged by the common getters, in the order of reading")
{
    const Enumerated result = EnumerateRow({{"ConfigManagerErrorCode", nullptr},
                                            {"ConfigManagerUserConfig", nullptr},
                                            {"CurrentHorizontalResolution", nullptr},
                                            {"CurrentRefreshRate", nullptr},
                                            {"DriverVersion", nullptr},
                                            {"DriverDate", nullptr},
                                            {"Name", {{"where", radeon}, {"status", "0x80041001"}}},
                                            {"AdapterRAM", nullptr},
                                            {"Status", nullptr}});
    const auto common = [](const std::string& getter, const std::string& message) {
        return Line("warning", "BaseGraphicCard::" + getter, message);
    };
    CHECK(result.Log == WholeRun({fillRateDone, common("GetConfigError", "Failed to get ConfigManagerErrorCode from WMI"),
                                  common("GetUserConfig", "Failed to get ConfigManagerUserConfig from WMI"),
                                  common("GetCurrentResolution", "Failed to get current resolution from WMI."),
                                  common("GetCurrentRefreshRate", "Failed to get current refresh rate from WMI"),
                                  common("GetDriverVersion", "Failed to get driver version from WMI"),
                                  Line("warning", "AMD::QueryInfo", "Failed to get Driver Date from WMI"),
                                  common("GetAdapterName", "Failed to get Adapter Name from WMI"),
                                  common("GetAdapterRam", "Failed to get AdapterRAM from WMI"),
                                  common("GetAdapterStatus", "Failed to get Status from WMI")}));
    CHECK(result.Card(0)["CurrentRefreshRate"] == 0);
    CHECK(result.Card(0)["UserConfig"] == false);
    CHECK(result.Card(0)["AdapterName"] == "");
    CHECK(result.Card(0)["CardName"] == radeon); // ADLX's
}

TEST_CASE("The serial number is empty if the BIOS has no row, or the property cannot be read")
{
    Json unreadable = AmdDesktop();
    Row(unreadable, "Win32_Bios")["SerialNumber"] = nullptr;
    CHECK(OnlyCard(unreadable)["GraphicsCardSn"] == "");
    Json without = AmdDesktop();
    without["wmi"]["classes"]["Win32_Bios"] = Json::array();
    CHECK(OnlyCard(without)["GraphicsCardSn"] == "");
}
