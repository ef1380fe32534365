// orvel-bench MACHINES SHIPPED OUTPUT: measures, prints a table and writes it as JSON. MACHINES: the folder of the machine
// files; SHIPPED: the folder of the DLLs as they are shipped.
// orvel-bench MACHINES traces: exits with 0 if product and floor make the same platform calls in the same order, else
// with 1. orvel-bench MACHINES load|peak|before: exits with one figure, measured in this fresh process.

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>

#include <windows.h>

#include <objbase.h>

#include "Table.h"

namespace {

using namespace orvel::bench;

constexpr int freshProcesses = 5;

/// Ends the process at once, because remaining destructors must not call simulated DLLs that are unloaded.
[[noreturn]] void End(size_t status)
{
    std::fflush(nullptr);
    ::TerminateProcess(::GetCurrentProcess(), static_cast<UINT>(status));
    std::abort();
}

std::vector<Machine> AllMachines(const std::string& folder)
{
    std::vector<Machine> machines = ShippedMachines(folder);
    const nlohmann::json laptop = machines.front().Json;
    machines.push_back({"1 Intel adapter", WithAdapters(laptop, 1), 400});
    machines.push_back({"8 Intel adapters", WithAdapters(laptop, 8), 100});
    machines.push_back({"64 Intel adapters", WithAdapters(laptop, 64), 50});
    machines.push_back({"64 Intel adapters, empty registry", WithoutRegistry(machines.back().Json), 50});
    return machines;
}

bool HaveSameTraces(const std::string& folder)
{
    bool areSame = true;
    for (const Machine& machine : AllMachines(folder)) {
        std::printf("%s\n", machine.Name.c_str());
        areSame = IsRepeated(machine.Json) && areSame;
    }
    return areSame;
}

/// The exit status of this program in a fresh process.
double FreshFigure(const std::string& folder, const char* figure)
{
    char program[MAX_PATH];
    ::GetModuleFileNameA(nullptr, program, MAX_PATH);
    std::string command = std::string("\"") + program + "\" \"" + folder + "\" " + figure;
    STARTUPINFOA start{};
    start.cb = sizeof(start);
    PROCESS_INFORMATION process{};
    if (!::CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start, &process)) {
        throw std::runtime_error("a fresh process cannot be started");
    }
    DWORD status = 0;
    ::WaitForSingleObject(process.hProcess, INFINITE);
    ::GetExitCodeProcess(process.hProcess, &status);
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    return status;
}

double FreshMedian(const std::string& folder, const char* figure)
{
    std::vector<double> values;
    values.reserve(freshProcesses);
    for (int index = 0; index < freshProcesses; ++index) {
        values.push_back(FreshFigure(folder, figure));
    }
    return Median(values);
}

Results MeasureAll(const std::string& folder, const std::string& shipped)
{
    Results results;
    for (const Machine& machine : AllMachines(folder)) {
        results.Machines.push_back(MeasureMachine(machine));
    }
    results.LoadMicroseconds = FreshMedian(folder, "load");
    results.PeakWorkingSetKib = static_cast<size_t>(FreshMedian(folder, "peak"));
    results.PeakWorkingSetBeforeKib = static_cast<size_t>(FreshMedian(folder, "before"));
    for (const char* dll :
         {"orvel-graphic-cards-enumeration.dll", "orvel-shared-wmi-client.dll", "orvel-graphic-cards-inventory.dll"}) {
        results.DllBytes[dll] = std::filesystem::file_size(shipped + "/" + dll);
    }
    return results;
}

int Run(const std::vector<std::string>& arguments)
{
    if (arguments.size() == 3) {
        const Results results = MeasureAll(arguments[0], arguments[1]);
        std::printf("%s", ToTable(results).c_str());
        std::ofstream(arguments[2]) << ToJson(results).dump(2) << '\n';
        return 0;
    }
    if (arguments.size() == 2 && arguments[1] == "traces") {
        return HaveSameTraces(arguments[0]) ? 0 : 1;
    }
    if (arguments.size() != 2) {
        std::fprintf(stderr, "orvel-bench: MACHINES SHIPPED OUTPUT, or MACHINES and one figure\n");
        return 2;
    }
    const nlohmann::json laptop = ShippedMachines(arguments[0]).front().Json;
    if (arguments[1] == "load") {
        End(static_cast<size_t>(MeasureLoading(laptop)));
    }
    End(MeasurePeakWorkingSet(laptop, arguments[1] == "peak"));
}

} // namespace

int main(int argc, char** argv)
{
    ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    try {
        End(static_cast<size_t>(Run(std::vector<std::string>(argv + 1, argv + argc))));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "orvel-bench: %s\n", error.what());
        End(1);
    }
}
