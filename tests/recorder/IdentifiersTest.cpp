#include "recorder/Identifiers.h"

#include <doctest/doctest.h>

using orvel::recorder::Json;
using orvel::recorder::ReplaceIdentifiers;

namespace {

Json Replaced(Json recording, const std::string& user = "grace")
{
    ReplaceIdentifiers(recording, user);
    return recording;
}

/// Whether two texts have digits, upper-case and lower-case letters and everything else at the same places.
bool HasSameForm(const std::string& left, const std::string& right)
{
    const auto kind = [](unsigned char letter) {
        return std::isdigit(letter) ? '0' : std::isupper(letter) ? 'A' : std::islower(letter) ? 'a' : letter;
    };
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [&](char one, char other) { return kind(one) == kind(other); });
}

Json WithSerial(const std::string& serial)
{
    return {{"wmi", {{"classes", {{"Win32_Bios", {{{"SerialNumber", serial}}}}}}}}};
}

const Json::json_pointer biosSerial("/wmi/classes/Win32_Bios/0/SerialNumber");

} // namespace

TEST_CASE("A serial number becomes another one of the same form")
{
    const Json recording = Replaced(WithSerial("PF-2K4x/91"));
    const auto serial = recording[biosSerial].get<std::string>();
    CHECK(serial != "PF-2K4x/91");
    CHECK(HasSameForm(serial, "PF-2K4x/91"));
    CHECK(recording["recorded"]["replaced"] == Json::array({biosSerial.to_string()}));
}

TEST_CASE("The serial number of a graphics card is replaced, also where the driver does not end it")
{
    Json recording = {{"nvml", {{"devices", Json::array()}}}};
    recording["nvml"]["devices"].push_back({{"nvmlDeviceGetSerial", "0321718012345"}});
    recording["nvml"]["devices"].push_back(
        {{"nvmlDeviceGetSerial", {{"status", 0}, {"value", "999"}, {"writes", "unterminated"}}}});
    recording = Replaced(recording);
    CHECK(recording["nvml"]["devices"][0]["nvmlDeviceGetSerial"] != "0321718012345");
    CHECK(recording["nvml"]["devices"][1]["nvmlDeviceGetSerial"]["value"] != "999");
    CHECK(recording["nvml"]["devices"][1]["nvmlDeviceGetSerial"]["writes"] == "unterminated");
}

TEST_CASE("The same serial number becomes the same one everywhere")
{
    Json recording = WithSerial("PF2K4X91");
    recording["adlx"]["gpus"][0]["Name"] = "PF2K4X91";
    recording = Replaced(recording);
    CHECK(recording["adlx"]["gpus"][0]["Name"] == recording[biosSerial]);
}

TEST_CASE("A serial number that other texts equal by chance is replaced in its own place only")
{
    Json recording = WithSerial("OK");
    recording["wmi"]["classes"]["Win32_VideoController"][0]["Status"] = "OK";
    recording = Replaced(recording);
    CHECK(recording["wmi"]["classes"]["Win32_VideoController"][0]["Status"] == "OK");
    CHECK(recording[biosSerial] != "OK");
}

TEST_CASE("UUIDs are replaced in texts and keys, and keep their order")
{
    Json recording;
    recording["registry"]["Video\\{BBBBBBBB-1111-2222-3333-444444444444}\\0000"] = {{"MatchingDeviceId", "b"}};
    recording["registry"]["Video\\{AAAAAAAA-1111-2222-3333-444444444444}\\0000"] = {
        {"MatchingDeviceId", "of {bbbbbbbb-1111-2222-3333-444444444444}"}};
    recording = Replaced(recording);
    const Json& registry = recording["registry"];
    CHECK(registry["Video\\{00000002-0000-4000-8000-000000000000}\\0000"]["MatchingDeviceId"] == "b");
    CHECK(registry["Video\\{00000001-0000-4000-8000-000000000000}\\0000"]["MatchingDeviceId"] ==
          "of {00000002-0000-4000-8000-000000000000}");
}

TEST_CASE("The class of display adapters is no identifier")
{
    const Json recording = {{"registry", {{"Class\\{4D36E968-E325-11CE-BFC1-08002BE10318}\\0000", Json::object()}}}};
    CHECK(Replaced(recording)["registry"] == recording["registry"]);
}

TEST_CASE("A PCI device's serial number is replaced, its place in the computer is not")
{
    Json recording;
    recording["registry"]["Enum\\PCI\\VEN_8086&DEV_15F3\\A4BB6DFFFF123456-00"] = Json::object();
    recording["wmi"]["id"] = "PCI\\VEN_10DE&DEV_2204\\A4BB6DFFFF123456-00";
    recording["wmi"]["place"] = "PCI\\VEN_8086&DEV_4680&SUBSYS_86941043&REV_0C\\3&11583659&0&10";
    recording = Replaced(recording);
    CHECK(recording["wmi"]["place"] == "PCI\\VEN_8086&DEV_4680&SUBSYS_86941043&REV_0C\\3&11583659&0&10");
    const auto id = recording["wmi"]["id"].get<std::string>();
    CHECK(id.find("A4BB6DFFFF123456-00") == std::string::npos);
    CHECK(id.starts_with("PCI\\VEN_10DE&DEV_2204\\"));
    CHECK(recording["registry"].contains("Enum\\PCI\\VEN_8086&DEV_15F3\\" + id.substr(22)));
}

TEST_CASE("User names are replaced in paths, and nowhere else")
{
    Json recording;
    recording["recorded"]["dlls"] = {"C:\\Users\\Ada\\nvml.dll", "D:\\Grace\\opencl.dll", "Z:\\home\\linus\\dxgi.dll"};
    recording["name"] = "Grace";
    recording = Replaced(recording);
    CHECK(recording["recorded"]["dlls"] ==
          Json{"C:\\Users\\user\\nvml.dll", "D:\\user\\opencl.dll", "Z:\\home\\user\\dxgi.dll"});
    CHECK(recording["name"] == "Grace");
}

TEST_CASE("The names of monitors are replaced, and the serial number of a USB display")
{
    Json recording;
    recording["displays"]["paths"][0] = {{"viewGdiDeviceName", "\\\\.\\DISPLAY1"},
                                         {"monitorFriendlyDeviceName", "Grace's U27"}};
    recording["pnp"]["devices"][0]["instance_id"] = "USB\\VID_17E9&PID_6006\\D2345678";
    recording = Replaced(recording);
    const Json& path = recording["displays"]["paths"][0];
    CHECK(path["viewGdiDeviceName"] == "\\\\.\\DISPLAY1");
    CHECK(path["monitorFriendlyDeviceName"] != "Grace's U27");
    CHECK(HasSameForm(path["monitorFriendlyDeviceName"], "Grace's U27"));
    const auto id = recording["pnp"]["devices"][0]["instance_id"].get<std::string>();
    CHECK(id.starts_with("USB\\VID_17E9&PID_6006\\"));
    CHECK(id.find("D2345678") == std::string::npos);
}

TEST_CASE("The UUID of a graphics card is replaced")
{
    Json recording = {{"nvml", {{"devices", Json::array()}}}};
    recording["nvml"]["devices"].push_back({{"nvmlDeviceGetUUID", "GPU-8f2a3b4c-1111-2222-3333-444444444444"}});
    recording = Replaced(recording);
    CHECK(recording["nvml"]["devices"][0]["nvmlDeviceGetUUID"] == "GPU-00000001-0000-4000-8000-000000000000");
}

TEST_CASE("An identifier that is no text becomes one that says nothing")
{
    Json recording = {{"nvml", {{"devices", Json::array()}}}};
    recording["nvml"]["devices"].push_back({{"nvmlDeviceGetSerial", {{"hex", "31323334ff"}}}});
    recording = Replaced(recording);
    CHECK(recording["nvml"]["devices"][0]["nvmlDeviceGetSerial"] == "X");
    CHECK(recording["recorded"]["replaced"] == Json::array({"/nvml/devices/0/nvmlDeviceGetSerial"}));
}

TEST_CASE("Without identifiers nothing is replaced")
{
    const Json recording = Replaced({{"name", "A computer"}, {"nvml", {{"nvmlInit_v2", 9}}}});
    CHECK(recording["recorded"]["replaced"] == Json::array());
    CHECK(recording["name"] == "A computer");
}
