#include "Measure.h"

#include <algorithm>
#include <cstdio>
#include <set>
#include <stdexcept>

#include <windows.h>

#include <psapi.h>

#include "GraphicCardEnumeration.h"
#include "InventoryRun.h"
#include "LateBinding.h"
#include "LoadedSimulation.h"
#include "Replay.h"

namespace orvel::bench {

namespace {

constexpr int warmUpRuns = 10;
constexpr int modelledRuns = 3;

size_t CountCalls(const char* start)
{
    return static_cast<size_t>(tools::SimulationCalls(start));
}

/// Loads the library on the first call, which must follow Simulate: the library must bind to the simulated DLLs.
void LoadProduct()
{
    static const char* const missing = [] {
        const HMODULE library = ::LoadLibraryW(L"orvel-graphic-cards-enumeration.dll");
        return library ? tools::BindLate(library) : "(it cannot be loaded)";
    }();
    if (missing) {
        throw std::runtime_error(std::string("orvel-graphic-cards-enumeration.dll: ") + missing);
    }
}

size_t RunProduct()
{
    LoadProduct();
    shared::enumeration::GraphicCardEnumeration enumeration;
    enumeration.QueryGraphicCards();
    return enumeration.size();
}

double Microseconds(const std::function<void()>& run)
{
    LARGE_INTEGER frequency;
    LARGE_INTEGER begin;
    LARGE_INTEGER end;
    ::QueryPerformanceFrequency(&frequency);
    ::QueryPerformanceCounter(&begin);
    run();
    ::QueryPerformanceCounter(&end);
    return static_cast<double>(end.QuadPart - begin.QuadPart) * 1e6 / static_cast<double>(frequency.QuadPart);
}

double MedianOf(int runs, const std::function<void()>& run)
{
    std::vector<double> times;
    times.reserve(static_cast<size_t>(runs));
    for (int index = 0; index < runs; ++index) {
        times.push_back(Microseconds(run));
    }
    return Median(times);
}

/// Runs product and floor alternately, so that other load of the computer affects both.
void MeasureByTurns(const Machine& machine, Replay& replay, Figures& figures)
{
    std::vector<double> product;
    std::vector<double> floor;
    for (int index = -warmUpRuns; index < machine.Runs; ++index) {
        const double productTime = Microseconds([] { RunProduct(); });
        const double floorTime = Microseconds([&] { replay.Run(); });
        if (index >= 0) {
            product.push_back(productTime);
            floor.push_back(floorTime);
        }
    }
    figures.Product = Median(product);
    figures.Floor = Median(floor);
}

/// The platform calls that `run` makes.
nlohmann::json Record(const std::function<void()>& run)
{
    tools::StartRecording();
    run();
    return nlohmann::json::parse(tools::EndRecording());
}

/// One connection, and each distinct query once, in sequence.
double IdealMicroseconds(const nlohmann::json& recording)
{
    std::set<std::string> queries;
    for (const nlohmann::json& call : recording) {
        if (const std::string text = call["call"]; text.starts_with("wmi query")) {
            queries.insert(text);
        }
    }
    return connectionMicroseconds + static_cast<double>(queries.size()) * queryMicroseconds;
}

/// Whether the replay makes the recorded calls. If not, prints the first difference to stderr.
bool RepeatsAll(const nlohmann::json& recording, Replay& replay)
{
    const nlohmann::json repeated = Record([&] { replay.Run(); });
    const nlohmann::json violations = nlohmann::json::parse(tools::SimulationReport())["violations"]["texts"];
    if (!violations.empty()) {
        std::fprintf(stderr, "the replay broke a rule: %s\n", violations.front().dump().c_str());
        return false;
    }
    if (repeated == recording) {
        return true;
    }
    const auto [left, right] = std::mismatch(recording.begin(), recording.end(), repeated.begin(), repeated.end());
    std::fprintf(stderr, "call %td: the product makes %s, the replay %s\n", left - recording.begin(),
                 left == recording.end() ? "none" : left->dump().c_str(),
                 right == repeated.end() ? "none" : right->dump().c_str());
    return false;
}

} // namespace

void Simulate(const nlohmann::json& machine)
{
    static const unsigned long error = tools::LoadSimulation();
    if (error != ERROR_SUCCESS) {
        throw std::runtime_error("orvel-simulation.dll cannot be loaded");
    }
    std::string problem;
    if (tools::SimulateMachineText(machine.dump(), "machine", problem) != ORVEL_SIMULATION_IN_PLACE) {
        throw std::runtime_error(problem);
    }
}

Figures MeasureMachine(const Machine& machine)
{
    Figures figures;
    figures.Machine = machine.Name;
    Simulate(machine.Json);
    figures.Cards = RunProduct();
    figures.Calls = CountCalls("");
    figures.Connections = CountCalls("wmi connect");
    figures.Queries = CountCalls("wmi query");

    const nlohmann::json recording = Record(RunProduct);
    Replay replay(recording);
    figures.HasSameTrace = RepeatsAll(recording, replay);
    MeasureByTurns(machine, replay, figures);

    Simulate(WithLatency(machine.Json));
    figures.Modelled = MedianOf(modelledRuns, [] { RunProduct(); });
    RunInventory(); // loads the DLL
    figures.Inventory = MedianOf(machine.Runs, RunInventory);
    figures.Ideal = IdealMicroseconds(recording);
    return figures;
}

bool IsRepeated(const nlohmann::json& machine)
{
    Simulate(machine);
    RunProduct(); // what happens only once, such as loading the product, is not recorded
    const nlohmann::json recording = Record(RunProduct);
    Replay replay(recording);
    return RepeatsAll(recording, replay);
}

double MeasureLoading(const nlohmann::json& machine)
{
    Simulate(machine);
    return Microseconds(LoadProduct);
}

size_t MeasurePeakWorkingSet(const nlohmann::json& machine, bool isEnumerated)
{
    Simulate(machine);
    if (isEnumerated) {
        RunProduct();
    }
    PROCESS_MEMORY_COUNTERS memory{};
    ::GetProcessMemoryInfo(::GetCurrentProcess(), &memory, sizeof(memory));
    return memory.PeakWorkingSetSize / 1024;
}

double Median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

} // namespace orvel::bench
