#include "Measure.h"

#include <algorithm>
#include <cstdio>
#include <set>
#include <stdexcept>

#include <windows.h>

#include <psapi.h>

#include "Floor.h"
#include "GraphicCardEnumeration.h"
#include "InventoryRun.h"
#include "LateBinding.h"
#include "LoadedSimulation.h"

namespace orvel::bench {

namespace {

using Trace = std::vector<std::string>;

constexpr int warmUpRuns = 10;
constexpr int modelledRuns = 3;

Trace TraceSoFar()
{
    return nlohmann::json::parse(tools::SimulationReport())["trace"];
}

size_t CountOf(const Trace& trace, const std::string& prefix)
{
    return static_cast<size_t>(
        std::count_if(trace.begin(), trace.end(), [&](const std::string& call) { return call.starts_with(prefix); }));
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
void MeasureByTurns(const Machine& machine, Figures& figures)
{
    std::vector<double> product;
    std::vector<double> floor;
    for (int index = -warmUpRuns; index < machine.Runs; ++index) {
        const double productTime = Microseconds([] { RunProduct(); });
        const double floorTime = Microseconds(RunFloor);
        if (index >= 0) {
            product.push_back(productTime);
            floor.push_back(floorTime);
        }
    }
    figures.Product = Median(product);
    figures.Floor = Median(floor);
}

Trace ProductTrace(const nlohmann::json& machine)
{
    Simulate(machine);
    RunProduct();
    return TraceSoFar();
}

Trace FloorTrace(const nlohmann::json& machine)
{
    Simulate(machine);
    PrepareFloor();
    RunFloor();
    return TraceSoFar();
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
    figures.HasSameTrace = HasSameTrace(machine.Json);
    const Trace trace = ProductTrace(machine.Json);
    figures.Calls = trace.size();
    figures.Connections = CountOf(trace, "wmi connect");
    figures.Queries = CountOf(trace, "wmi query");

    Simulate(machine.Json);
    PrepareFloor();
    figures.Cards = RunProduct();
    MeasureByTurns(machine, figures);

    Simulate(WithLatency(machine.Json));
    figures.Modelled = MedianOf(modelledRuns, [] { RunProduct(); });
    RunInventory(); // loads the DLL
    figures.Inventory = MedianOf(machine.Runs, RunInventory);
    const std::set<std::string> distinct(trace.begin(), trace.end());
    const auto questions = CountOf({distinct.begin(), distinct.end()}, "wmi query");
    figures.Ideal = connectionMicroseconds + static_cast<double>(questions) * queryMicroseconds;
    return figures;
}

bool HasSameTrace(const nlohmann::json& machine)
{
    const Trace product = ProductTrace(machine);
    const Trace floor = FloorTrace(machine);
    if (product == floor) {
        return true;
    }
    const auto [left, right] = std::mismatch(product.begin(), product.end(), floor.begin(), floor.end());
    std::fprintf(stderr, "call %td: the product makes \"%s\", the floor \"%s\"\n", left - product.begin(),
                 left == product.end() ? "" : left->c_str(), right == floor.end() ? "" : right->c_str());
    return false;
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
