#include "SimulatedRun.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <utility>

#include <doctest/doctest.h>

#include "LoadedSimulation.h"

namespace orvel::tests {

namespace {

Json SimulationReport()
{
    return Json::parse(tools::SimulationReport());
}

Json JsonFile(const std::filesystem::path& path, const char* advice)
{
    std::ifstream file(path);
    if (!file) {
        throw std::runtime_error("no " + path.filename().string() + " in " + path.parent_path().string() + ": " + advice);
    }
    return Json::parse(file);
}

/// The number of violations that have been taken on the machine in place.
size_t violationsTaken = 0;

struct NotedEvent {
    int CallsBefore;
    std::string Text;
};

/// The notes on the machine in place.
std::vector<NotedEvent> notes;

} // namespace

Json Machine(const std::string& name)
{
    return JsonFile(std::filesystem::path(u8"" ORVEL_MACHINES) / (name + ".json"), "write it");
}

std::vector<std::string> MachineNames()
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(u8"" ORVEL_MACHINES))) {
        if (entry.path().extension() == ".json") {
            names.push_back(entry.path().stem().string());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

Json Expected(const std::string& name)
{
    return JsonFile(std::filesystem::path(u8"" ORVEL_EXPECTED) / (name + ".json"), "derive it by hand, see CONTRIBUTING.md");
}

Json HealthyLaptop()
{
    return Machine("intel-laptop");
}

Json& Row(Json& machine, const std::string& wmiClass, size_t index)
{
    return machine["wmi"]["classes"][wmiClass][index];
}

Json& VideoController(Json& machine, size_t index)
{
    return Row(machine, "Win32_VideoController", index);
}

Json& MemoryModule(Json& machine, size_t index)
{
    return Row(machine, "Win32_PhysicalMemory", index);
}

void Simulate(const Json& machine)
{
    CheckNoViolations();
    std::string problem;
    const int result = tools::SimulateMachineText(machine.dump(), "test machine", problem);
    if (result != ORVEL_SIMULATION_WRONG_MACHINE) { // which changes nothing
        violationsTaken = 0;
        notes.clear();
    }
    if (result != ORVEL_SIMULATION_IN_PLACE) {
        throw std::runtime_error(problem);
    }
}

std::vector<std::string> Trace()
{
    return SimulationReport()["trace"];
}

void Note(const std::string& event)
{
    notes.push_back({tools::SimulationCalls(""), event});
}

std::vector<std::string> Events()
{
    std::vector<std::string> events = Trace();
    // From the last note, because an insertion moves all later positions.
    for (auto note = notes.rbegin(); note != notes.rend(); ++note) {
        events.insert(events.begin() + note->CallsBefore, note->Text);
    }
    return events;
}

std::map<std::string, int> Live()
{
    return SimulationReport()["live"];
}

std::vector<std::string> TakeViolations()
{
    const std::vector<std::string> texts = SimulationReport()["violations"]["texts"];
    const size_t first = std::exchange(violationsTaken, texts.size());
    return {texts.begin() + static_cast<std::ptrdiff_t>(first), texts.end()};
}

void CheckNoViolations()
{
    for (const std::string& violation : TakeViolations()) {
        FAIL_CHECK(violation);
    }
}

std::vector<std::string> Only(const std::vector<std::string>& trace, const std::string& prefix)
{
    std::vector<std::string> lines;
    for (const std::string& line : trace) {
        if (line.starts_with(prefix)) {
            lines.push_back(line);
        }
    }
    return lines;
}

} // namespace orvel::tests
