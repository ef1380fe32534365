// A machine is simulated, recorded, and simulated from the recording: the inventory is the same at every depth.

#include <filesystem>

#include <doctest/doctest.h>

#include "Snapshots.h"
#include "recorder/Recorder.h"

using namespace orvel::tests;

namespace {

/// Milliseconds. A call that hangs does so for longer.
constexpr uint32_t snapshotLimit = 700, patience = 1500;

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
    return InventoryOf(machine, depth, machine.contains("hang") ? snapshotLimit : 20'000);
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
    return names;
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
