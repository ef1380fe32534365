// A machine is simulated, recorded, and simulated from the recording: the library gives the same records, log and
// exceptions. ORVEL_SOAK_MACHINES and ORVEL_SOAK_SEED choose how many random machines and which; ./dev soak sets the first.

#include <algorithm>
#include <cstdlib>

#include <doctest/doctest.h>

#include "Faults.h"
#include "RandomMachines.h"
#include "recorder/Recorder.h"
#include "support/Enumerated.h"

using namespace orvel::tests;

namespace {

uint32_t Setting(const char* name, uint32_t otherwise)
{
    const char* text = std::getenv(name);
    return text ? static_cast<uint32_t>(std::stoul(text)) : otherwise;
}

Json Record(const Json& machine)
{
    Simulate(machine);
    orvel::recorder::RecordOptions options;
    options.KeepIdentifiers = true;
    const auto recording = orvel::recorder::RecordComputer(options);
    CheckNoViolations();
    return Json::parse(recording.dump());
}

void CheckSame(const Enumerated& original, const Enumerated& replayed)
{
    CHECK(Json::diff(original.Cards, replayed.Cards).dump() == "[]");
    CHECK(original.Log == replayed.Log);
    CHECK(original.Thrown == replayed.Thrown);
}

/// The enumeration of a machine in a process where none has left ADLX open, as a failed query of AMD's does.
Enumerated EnumerateFirst(const Json& machine)
{
    const Enumerated result = Enumerate(machine);
    if (result.Live.at("adlx") != 0) {
        Enumerate(Machine("workstation")); // ends it
    }
    return result;
}

/// Whether a failure of the machine hits the K-th query of any text, and Intel's run ends early: an enumeration then asks
/// its K-th query elsewhere than the recorder, which asks all that a run may ask. No computer counts queries.
bool DependsOnOrder(const Json& machine, const Enumerated& original)
{
    const Json failures = machine.value("wmi", Json::object()).value("failures", Json::array());
    const auto countsAll = [](const Json& failure) { return failure["contains"] == "SELECT"; };
    const auto isIntels = [](const Json& card) { return card["Manufacturer"] == "Intel"; };
    return std::any_of(failures.begin(), failures.end(), countsAll) &&
           std::none_of(original.Cards.begin(), original.Cards.end(), isIntels);
}

/// False for a machine that depends on the order, which is not compared.
bool CheckRecording(const Json& machine)
{
    const Enumerated original = EnumerateFirst(machine);
    if (DependsOnOrder(machine, original)) {
        return false;
    }
    const Json recording = Record(machine);
    INFO(recording.dump());
    CheckSame(original, EnumerateFirst(recording));
    return true;
}

} // namespace

TEST_CASE("Every machine of the project is recorded as it is")
{
    for (const std::string& name : MachineNames()) {
        INFO(name);
        CHECK(CheckRecording(Machine(name)));
        for (const auto& [api, objects] : Live()) {
            CHECK_MESSAGE(objects == 0, api << " has live objects");
        }
    }
}

TEST_CASE("A recording is recorded as itself")
{
    const Json recording = Record(HealthyWorkstation());
    CHECK(Json::diff(recording, Record(recording)).dump() == "[]");
}

TEST_SUITE_BEGIN("soak");

TEST_CASE("Random machines are recorded as they are")
{
    const uint32_t first = Setting("ORVEL_SOAK_SEED", 1);
    const uint32_t machines = Setting("ORVEL_SOAK_MACHINES", 100);
    uint32_t compared = 0;
    for (uint32_t seed = first; seed < first + machines; ++seed) {
        INFO("ORVEL_SOAK_SEED=" << seed << " ORVEL_SOAK_MACHINES=1");
        compared += CheckRecording(RandomMachine(seed)) ? 1 : 0;
    }
    MESSAGE(compared << " of " << machines << " machines compared");
    CHECK(compared >= machines - machines / 50 - 1);
}

TEST_CASE("A machine with a fault is recorded with it")
{
    const std::vector<Fault> faults = AllFaults();
    const bool isSample = std::getenv("ORVEL_SOAK_MACHINES") == nullptr;
    for (size_t index = 0; index < faults.size(); index += isSample ? 7 : 1) {
        INFO(faults[index].Name);
        Json machine = HealthyWorkstation();
        Apply(faults[index], machine);
        CHECK(CheckRecording(machine));
    }
}

TEST_SUITE_END();
