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

/// The machine, in which a failure of the K-th query of any text is one of the text that it hits. An enumeration sees no
/// difference. The recorder asks all that a run may ask, so it counts other queries; no computer counts any.
Json WithFailuresByText(Json machine, const std::vector<std::string>& trace)
{
    const std::string prefix = "wmi query ";
    const auto queries = Only(trace, prefix);
    const Json failures = machine.value("wmi", Json::object()).value("failures", Json::array());
    if (failures.empty()) {
        return machine;
    }
    machine["wmi"]["failures"] = Json::array();
    for (Json failure : failures) {
        const size_t nth = failure.value("nth", 0U);
        if (failure["contains"] == "SELECT" && nth > queries.size()) {
            continue; // it hits none
        }
        if (failure["contains"] == "SELECT" && nth > 0) {
            const std::string& hit = queries[nth - 1];
            failure["contains"] = hit.substr(prefix.size());
            failure["nth"] = std::count(queries.begin(), queries.begin() + static_cast<std::ptrdiff_t>(nth), hit);
        }
        machine["wmi"]["failures"].push_back(failure);
    }
    return machine;
}

void CheckRecording(const Json& machine)
{
    const Enumerated original = EnumerateFirst(machine);
    const Json recorded = WithFailuresByText(machine, original.Trace);
    if (recorded != machine) {
        CheckSame(original, EnumerateFirst(recorded));
    }
    const Json recording = Record(recorded);
    INFO(recording.dump());
    CheckSame(original, EnumerateFirst(recording));
}

} // namespace

TEST_CASE("Every machine of the project is recorded as it is")
{
    for (const std::string& name : MachineNames()) {
        INFO(name);
        CheckRecording(Machine(name));
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
    const uint32_t machines = Setting("ORVEL_SOAK_MACHINES", 40);
    for (uint32_t seed = first; seed < first + machines; ++seed) {
        INFO("ORVEL_SOAK_SEED=" << seed << " ORVEL_SOAK_MACHINES=1");
        CheckRecording(RandomMachine(seed));
    }
}

TEST_CASE("A machine with a fault is recorded with it")
{
    const std::vector<Fault> faults = AllFaults();
    const bool isSample = std::getenv("ORVEL_SOAK_MACHINES") == nullptr;
    for (size_t index = 0; index < faults.size(); index += isSample ? 17 : 1) {
        INFO(faults[index].Name);
        Json machine = HealthyWorkstation();
        Apply(faults[index], machine);
        CheckRecording(machine);
    }
}

TEST_SUITE_END();
