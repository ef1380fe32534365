// Whole machine files: the errors, and their positions.

#include <doctest/doctest.h>

#include "machine/MachineText.h"

using namespace orvel::simulation;

namespace {

/// The reason why the text is refused; "" if it is accepted.
std::string Problem(const std::string& text)
{
    try {
        ReadMachine(text);
        return "";
    } catch (const MachineError& error) {
        return error.what();
    }
}

} // namespace

TEST_CASE("A machine has only the interfaces that its text names")
{
    const Machine machine = ReadMachine(R"({"name": "box", "nvml": {"devices": [{}]}, "dxgi": "system"})");
    CHECK(machine.name == "box");
    CHECK(machine.nvml.standing == Standing::Simulated);
    CHECK(machine.nvml.model.devices.size() == 1);
    CHECK(machine.dxgi.standing == Standing::System);
    CHECK(machine.adl.standing == Standing::Missing);
    CHECK_FALSE(ReadMachine("{}").name);
}

TEST_CASE("Invalid JSON is rejected with line and column")
{
    CHECK(Problem("{\n  \"a\" 1}") ==
          "line 2, column 7: syntax error while parsing object separator - unexpected number literal; expected ':'");
    CHECK(Problem("").starts_with("line 1, column 1: "));
    CHECK(Problem("{}\n\nx").starts_with("line 3, column 1: "));
}

TEST_CASE("A number that fits no type is rejected")
{
    CHECK(Problem(R"({"name": 1e999})") == "/: number overflow parsing '1e999'");
}

TEST_CASE("A repeated key in an object is rejected with its position; in two objects it is allowed")
{
    CHECK(Problem(R"({"nvml": {"devices": [{}, {"handle": 0, "handle": 1}]}})") ==
          "/nvml/devices/1/handle: the key \"handle\" is repeated");
    CHECK(Problem(R"({"nvml": {"devices": [{"handle": 0}, {"handle": 1}]}})") == "");
}

TEST_CASE("An unknown key is rejected, and the error lists the known keys")
{
    CHECK(Problem(R"({"nvml": {"devics": []}})") ==
          "/nvml/devics: unknown key \"devics\"; known here: \"missing\", \"nvmlInit_v2\", \"nvmlShutdown\", "
          "\"nvmlSystemGetDriverVersion\", \"nvmlDeviceGetCount_v2\", \"nvmlErrorString\", \"devices\"");
    CHECK(Problem("[]") == "/: expected an object, found array");
}

TEST_CASE("An interface is an object, or \"system\" for the computer's own")
{
    CHECK(Problem(R"({"dxgi": "computer"})") == "/dxgi: expected an object or \"system\", found \"computer\"");
    CHECK(Problem(R"({"dxgi": 1})") == "/dxgi: expected an object, found number");
}

TEST_CASE("The registry contains texts, numbers and bytes, in paths without a leading backslash")
{
    const Machine machine =
        ReadMachine(R"({"registry": {"Software\\A": {"t": "x", "n": 4294967295, "b": {"hex": "00fF"}}}})");
    const RegistryKeyModel& key = machine.registry.model.keys.at(0);
    CHECK(key.path == "Software\\A");
    REQUIRE(key.values.size() == 3); // in the order of their names
    CHECK(std::get<std::vector<uint8_t>>(key.values[0].second) == std::vector<uint8_t>{0x00, 0xFF});
    CHECK(std::get<uint32_t>(key.values[1].second) == 4294967295);
    CHECK(std::get<std::string>(key.values[2].second) == "x");
    CHECK(Problem(R"({"registry": {"\\A": {}}})") ==
          "/registry/\\A: expected a key path below HKEY_LOCAL_MACHINE, without a backslash in front");
    CHECK(Problem(R"({"registry": {"A": {"v": {"hex": "123"}}}})") ==
          "/registry/A/v/hex: expected pairs of hexadecimal digits");
    CHECK(Problem(R"({"registry": {"A": {"v": {"hex": "1G"}}}})") ==
          "/registry/A/v/hex: expected pairs of hexadecimal digits");
    CHECK(Problem(R"({"registry": {"A": {"v": true}}})") ==
          "/registry/A/v: expected a text, a number, {\"hex\": digits}, {\"qword\": number} or {\"status\": number}");
}

TEST_CASE("The registry contains 64-bit numbers and bytes of any type, and drivers' keys contain values that are refused")
{
    const Machine machine = ReadMachine(R"({"registry": {"System\\CurrentControlSet\\Control\\Class\\{C}\\0000": {
        "a": {"qword": 25769803776}, "b": {"type": 1, "hex": "3dd80000"}, "c": {"status": 5}}}})");
    const auto& values = machine.registry.model.keys.at(0).values;
    CHECK(std::get<uint64_t>(values.at(0).second) == 25769803776);
    CHECK(std::get<RegistryBytes>(values.at(1).second).type == 1);
    CHECK(std::get<RegistryBytes>(values.at(1).second).bytes == std::vector<uint8_t>{0x3D, 0xD8, 0, 0});
    CHECK(std::get<RegistryRefusal>(values.at(2).second).status == 5);
    CHECK(machine.registry.model.Find(L"SYSTEM\\currentcontrolset\\Control\\Class\\{c}\\0000"));
    CHECK_FALSE(machine.registry.model.Find(L"SYSTEM"));
    CHECK(Problem(R"({"registry": {"A": {"v": {"qword": -1}}}})") ==
          "/registry/A/v/qword: the number must lie between 0 and 18446744073709551615");
    CHECK(Problem(R"({"registry": {"A": {"v": {"type": 1}}}})") == "/registry/A/v: \"type\" needs \"hex\"");
    CHECK(Problem(R"({"registry": {"A": {"v": {"status": 5}}}})") ==
          "/registry/A/v: only values of drivers' keys, below SYSTEM\\CurrentControlSet\\Control\\Class, can be refused");
}

TEST_CASE("A device has an instance id of its own, and properties of their types")
{
    const auto problem = [](const std::string& device) {
        return Problem(R"({"pnp": {"devices": [{"instance_id": "A"}, )" + device + "]}}");
    };
    const std::string place = "/pnp/devices/1";
    CHECK(problem(R"({"instance_id": "B", "DeviceDesc": "x", "HardwareIds": ["x"], "BusNumber": 4294967295, "Luid": 0,
        "DriverDate": 1, "PowerData": "D3", "IndirectDisplay": true, "IsPresent": false, "ProblemStatus": -1,
        "AdapterLuid": {"hex": "00"}, "Service": {"type": 18, "hex": ""}, "Driver": {"status": 5},
        "SetupDiOpenDevRegKey": 5})") == "");
    CHECK(problem("{}") == place + ": a device needs \"instance_id\"");
    CHECK(problem(R"({"instance_id": ""})") == place + ": an instance id has 1 to 199 characters");
    CHECK(problem(R"({"instance_id": "a"})") == place + ": another device has the same instance id");
    const auto property = [&](const std::string& text) { return problem(R"({"instance_id": "B", )" + text + "}"); };
    CHECK(property(R"("Name": "x")").starts_with(place + "/Name: unknown key \"Name\"; known here: \"instance_id\", "));
    CHECK(property(R"("DeviceDesc": 1)") == place + "/DeviceDesc: expected a text, found number");
    CHECK(property(R"("HardwareIds": "x")") == place + "/HardwareIds: expected an array, found a text");
    CHECK(property(R"("HardwareIds": [""])") == place + "/HardwareIds/0: an empty text would end the list");
    CHECK(property(R"("BusNumber": 4294967296)") == place + "/BusNumber: the number must lie between 0 and 4294967295");
    CHECK(property(R"("PowerData": "D4")") == place + "/PowerData: expected \"D0\", \"D1\", \"D2\" or \"D3\", found \"D4\"");
    for (const std::string date : {"2025-02-29", "2025-5-9", "1600-12-31", "2025-13-01", "2025-05-09x", "x025-05-09"}) {
        CHECK(property("\"DriverDate\": \"" + date + "\"") ==
              place + "/DriverDate: expected a number or a date such as \"2024-05-09\", found \"" + date + "\"");
    }
    CHECK(property(R"("Service": {"type": 18})") == place + "/Service: \"type\" needs \"hex\"");
    CHECK(property(R"("Service": {"status": 5, "writes": "unterminated"})") ==
          place + "/Service/writes: expected \"nothing\" or \"rubbish\", found \"unterminated\"");
}

TEST_CASE("A display path has an adapter, and no other path its target")
{
    const auto problem = [](const std::string& path) {
        return Problem(R"({"displays": {"paths": [{"adapterId": 7}, )" + path + "]}}");
    };
    CHECK(problem(R"({"adapterId": 7, "targetId": 1, "refreshRate": [60, 1], "sourceMode": {"width": 1, "height": 1}})") ==
          "");
    CHECK(problem("{}") == "/displays/paths/1: a path needs \"adapterId\"");
    CHECK(problem(R"({"adapterId": 7})") == "/displays/paths/1: another path has the same adapterId and targetId");
    CHECK(problem(R"({"adapterId": 8, "refreshRate": [60]})") ==
          "/displays/paths/1/refreshRate: expected [numerator, denominator]");
    CHECK(problem(R"({"adapterId": 8, "sourceMode": {"width": 1}})") ==
          "/displays/paths/1/sourceMode: a mode needs \"width\" and \"height\"");
}

TEST_CASE("DXGI's flags and DXCore's attributes are those that exist")
{
    CHECK(Problem(R"({"dxgi": {"adapters": [{"Flags": 4294967296}]}})") ==
          "/dxgi/adapters/0/Flags: the number must lie between 0 and 4294967295");
    CHECK(Problem(R"({"dxgi": {"adapters": [{"Description": {"hex": "00"}}]}})") ==
          "/dxgi/adapters/0/Description/hex: expected the bytes of UTF-16, two for each character");
    CHECK(
        Problem(R"({"dxcore": {"adapters": [{"attributes": ["D3D9"]}]}})") ==
        "/dxcore/adapters/0/attributes/0: expected \"D3D11_GRAPHICS\", \"D3D12_GRAPHICS\" or \"D3D12_CORE_COMPUTE\", found "
        "\"D3D9\"");
}

TEST_CASE("A call that hangs has a beginning of its text and a time")
{
    const Machine machine = ReadMachine(R"({"hang": [{"call": "dxgi ", "nth": 2, "milliseconds": 5}]})");
    CHECK(machine.hangs.at(0).call == "dxgi ");
    CHECK(machine.hangs.at(0).nth == 2);
    CHECK(machine.hangs.at(0).milliseconds == 5);
    CHECK(Problem(R"({"hang": [{"call": "dxgi "}]})") == "/hang/0: a call that hangs needs \"call\" and \"milliseconds\"");
    CHECK(Problem(R"({"hang": [{"call": "", "milliseconds": 5}]})") ==
          "/hang/0: a call that hangs needs \"call\" and \"milliseconds\"");
    CHECK(Problem(R"({"hang": [{"call": "x", "milliseconds": 5, "nth": 0}]})") ==
          "/hang/0/nth: the number must lie between 1 and 4294967295");
}

TEST_CASE("A property of WMI has a type that its value fits")
{
    const auto problem = [](const std::string& property) {
        return Problem(R"({"wmi": {"classes": {"C": [{"P": )" + property + "}]}}}");
    };
    const std::string place = "/wmi/classes/C/0/P";
    CHECK(problem(R"({"vt": "I4", "value": -1})") == "");
    CHECK(problem(R"({"vt": "I4", "value": 2147483648})") ==
          place + "/value: the number must lie between -2147483648 and 2147483647");
    CHECK(problem(R"({"vt": "I8", "value": 1})") ==
          place + "/vt: expected \"UI4\", \"I4\", \"R4\", \"R8\", \"BSTR\", \"BOOL\" or \"EMPTY\", found \"I8\"");
    CHECK(problem(R"({"vt": "I4", "status": 1})") == place + ": \"vt\" needs \"value\"");
    CHECK(problem(R"({"value": 1})") == place + ": \"value\" needs \"vt\", \"where\" or \"status\"");
    CHECK(problem(R"({"where": "x"})") == place + ": a property needs \"value\" or \"status\"");
    CHECK(problem("[]") ==
          place + ": expected a number, a text, true, false, null or an object with \"status\", \"vt\" or \"where\"");
}

TEST_CASE("A driver's text can be written as bytes")
{
    const Machine machine = ReadMachine(R"({"nvml": {"devices": [{"nvmlDeviceGetSerial": {"hex": "41ff"}}]}})");
    CHECK(machine.nvml.model.devices.at(0).serial.value == "A\xFF");
    CHECK(Problem(R"({"nvml": {"devices": [{"nvmlDeviceGetSerial": {"hex": "4"}}]}})") ==
          "/nvml/devices/0/nvmlDeviceGetSerial/hex: expected pairs of hexadecimal digits");
}

TEST_CASE("NVML's texts belong to statuses")
{
    const Machine machine = ReadMachine(R"({"nvml": {"nvmlErrorString": {"3": "No", "999": "What?"}}})");
    CHECK(machine.nvml.model.errorTexts == std::map<int32_t, std::string>{{3, "No"}, {999, "What?"}});
    CHECK(Problem(R"({"nvml": {"nvmlErrorString": {"three": "No"}}})") ==
          "/nvml/nvmlErrorString/three: expected a status such as \"3\", found \"three\"");
}

TEST_CASE("The answer to a query of WMI has rows that are there, or a status")
{
    const auto problem = [](const std::string& answer) {
        return Problem(R"({"wmi": {"queries": {"Q": )" + answer + R"(}, "classes": {"C": [{}, {}]}}})");
    };
    CHECK(problem(R"({"class": "C", "rows": [1]})") == "");
    CHECK(problem(R"({"class": "C", "rows": [2]})") == "/wmi/queries/Q/rows/0: the class has 2 rows, counted from 0");
    CHECK(problem(R"({"class": "D", "rows": []})") == "/wmi/queries/Q/class: \"classes\" does not have the class \"D\"");
    CHECK(problem(R"({"rows": [0]})") == "/wmi/queries/Q/rows/0: the number of a row needs \"class\"");
    CHECK(problem("{}") == "/wmi/queries/Q: the answer to a query needs \"rows\" or \"status\"");
    CHECK(problem("[]") == "/wmi/queries/Q: a query needs an answer");
}

TEST_CASE("Where a file was recorded is read and has no effect")
{
    CHECK(Problem(R"({"recorded": {"windows": "10.0.19045", "dlls": [{"dll": "a", "path": "b", "version": "c"}]}})") == "");
    CHECK(Problem(R"({"recorded": {"when": 1}})").starts_with("/recorded/when: unknown key"));
}

TEST_CASE("WMI names are case-insensitive")
{
    CHECK(Problem(R"({"wmi": {"classes": {"C": [{"P": 1, "p": 2}]}}})") ==
          "/wmi/classes/C/0/p: the property is repeated (names are case-insensitive)");
    CHECK(Problem(R"({"wmi": {"classes": {"C": [], "c": []}}})") ==
          "/wmi/classes/c: the class is repeated (names are case-insensitive)");
}

TEST_CASE("The keys of ADL adapters are integer indexes")
{
    CHECK(Problem(R"({"adl": {"adapters": {"0": {}, "12": {}}}})") == "");
    for (const std::string key : {"", "01", "x", "1x", "99999999999"}) {
        CAPTURE(key);
        CHECK(Problem("{\"adl\": {\"adapters\": {\"" + key + "\": {}}}}") ==
              "/adl/adapters/" + key + ": expected an adapter index such as \"0\", found \"" + key + "\"");
    }
}

TEST_CASE("NVAPI lists at most 64 GPUs")
{
    const auto machineWith = [](size_t gpus) {
        return nlohmann::json{{"nvapi", {{"gpus", std::vector(gpus, nlohmann::json::object())}}}}.dump();
    };
    CHECK(Problem(machineWith(64)) == "");
    CHECK(Problem(machineWith(65)) == "/nvapi/gpus: NVAPI lists 64 GPUs at most");
}
