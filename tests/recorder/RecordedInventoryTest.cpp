// A machine is simulated, recorded, and simulated from the recording: the inventory is the same at every depth.
// ORVEL_SOAK_MACHINES and ORVEL_SOAK_SEED choose how many random machines and which.

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include <doctest/doctest.h>

#include "RandomInventories.h"
#include "Snapshots.h"
#include "recorder/Recorder.h"

using namespace orvel::tests;

namespace {

/// Milliseconds. A call that hangs does so for longer.
constexpr uint32_t snapshotLimit = 600, patience = 1000;

Json Record(const Json& machine)
{
    Simulate(machine);
    orvel::recorder::RecordOptions options;
    options.KeepIdentifiers = true;
    options.PatienceMilliseconds = machine.contains("hang") ? patience : options.PatienceMilliseconds;
    const Json recording = Json::parse(orvel::recorder::RecordComputer(options).dump());
    CheckNoViolations();
    return recording;
}

Json Inventory(const Json& machine, const std::string& depth)
{
    return machine.contains("hang") ? InventoryOf(machine, depth, snapshotLimit) : InventoryOf(machine, depth);
}

void CheckRecordedInventory(const Json& machine)
{
    const Json recording = Record(machine);
    INFO(recording.dump());
    for (const char* depth : {"system", "graphics", "drivers"}) {
        CAPTURE(depth);
        CHECK(Json::diff(Inventory(machine, depth), Inventory(recording, depth)).dump() == "[]");
    }
}

std::vector<std::string> TrapNames()
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(u8"" ORVEL_TRAPS))) {
        if (entry.path().extension() == ".json") {
            names.push_back(entry.path().stem().string());
        }
    }
    std::sort(names.begin(), names.end()); // random machines are the same everywhere
    return names;
}

uint32_t Setting(const char* name, uint32_t otherwise)
{
    const char* text = std::getenv(name);
    return text ? static_cast<uint32_t>(std::stoul(text)) : otherwise;
}

} // namespace

TEST_CASE("A recording of each machine of the gallery has the machine's inventory")
{
    for (const std::string& name : MachineNames()) {
        INFO(name);
        CheckRecordedInventory(Machine(name));
    }
}

TEST_CASE("A recording of each trap has the trap's inventory")
{
    const auto names = TrapNames();
    CHECK_FALSE(names.empty());
    for (const std::string& name : names) {
        INFO(name);
        CheckRecordedInventory(TrapMachine(name));
    }
}

TEST_SUITE_BEGIN("soak");

TEST_CASE("A recording of a machine with random failures has the machine's inventory")
{
    const auto names = TrapNames();
    const uint32_t first = Setting("ORVEL_SOAK_SEED", 1);
    const uint32_t machines = Setting("ORVEL_SOAK_MACHINES", 25);
    for (uint32_t seed = first; seed < first + machines; ++seed) {
        INFO("ORVEL_SOAK_SEED=" << seed << " ORVEL_SOAK_MACHINES=1");
        Json machine = TrapMachine(names[seed % names.size()]);
        machine.erase("hang"); // whose limits take their time
        CheckRecordedInventory(WithRandomFailures(machine, seed));
    }
}

TEST_SUITE_END();
