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
          "\"nvmlDeviceGetCount_v2\", \"devices\"");
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
    CHECK(Problem(R"({"registry": {"A": {"v": true}}})") == "/registry/A/v: expected a text, a number or {\"hex\": digits}");
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
          place + "/vt: expected \"UI4\", \"I4\", \"R4\", \"R8\", \"BSTR\" or \"BOOL\", found \"I8\"");
    CHECK(problem(R"({"vt": "I4", "status": 1})") == place + ": \"vt\" needs \"value\"");
    CHECK(problem(R"({"value": 1})") == place + ": \"value\" needs \"vt\", \"where\" or \"status\"");
    CHECK(problem(R"({"where": "x"})") == place + ": a property needs \"value\" or \"status\"");
    CHECK(problem("[]") ==
          place + ": expected a number, a text, true, false, null or an object with \"status\", \"vt\" or \"where\"");
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
