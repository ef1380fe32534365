// Tests of a host on simulated machines: card-tests TEST runs one test and returns 0 if it passes.

#include <stdio.h>
#include <string.h>

#include <objbase.h>

#include "GraphicCards.h"
#include "OrvelSimulation.h"

using namespace orvel::shared::enumeration;

static int failures = 0;

static void Check(bool holds, const char* what)
{
    if (!holds) {
        ++failures;
        printf("FAILED: %s\n", what);
    }
}

// Simulates a machine of the package for the object's lifetime.
class SimulatedMachine {
public:
    explicit SimulatedMachine(const char* name)
    {
        char path[1024];
        snprintf(path, sizeof path, "%s/%s.json", MACHINES, name);
        isInPlace = OrvelSimulateMachine(path, &problem) == ORVEL_SIMULATION_IN_PLACE;
    }
    SimulatedMachine(const SimulatedMachine&) = delete;
    SimulatedMachine& operator=(const SimulatedMachine&) = delete;
    ~SimulatedMachine() { OrvelEndSimulation(); }

    bool IsInPlace() const { return isInPlace; }
    const char* Problem() const { return problem; }

private:
    const char* problem = "";
    bool isInPlace = false;
};

// The function of the host that the tests check.
static size_t CountCardsWithScreen(const GraphicCards& cards)
{
    size_t count = 0;
    for (const GraphicCard card : cards) {
        count += card.CurrentResolution().size() > 0 ? 1U : 0U;
    }
    return count;
}

static void FindsBothChips()
{
    const SimulatedMachine machine("hybrid-laptop");
    Check(machine.IsInPlace(), machine.Problem());
    GraphicCards cards;
    cards.Enumerate();
    Check(cards.size() == 2, "a hybrid laptop has two cards");
    Check(CountCardsWithScreen(cards) == 1, "one of them drives the screen");
}

static void AsksDriversOnce()
{
    const SimulatedMachine machine("workstation");
    Check(machine.IsInPlace(), machine.Problem());
    GraphicCards cards;
    cards.Enumerate();
    Check(OrvelSimulationCalls("nvml nvmlInit_v2") == 1, "NVML is initialised once");
    Check(OrvelSimulationCalls("wmi connect") == 1, "there is one connection to WMI");
    Check(OrvelSimulationCalls("nvml ") > 1, "NVML is called");
}

static void ReportsAMissingDriver()
{
    const SimulatedMachine machine("nvidia-missing-driver");
    Check(machine.IsInPlace(), machine.Problem());
    GraphicCards cards;
    cards.Enumerate();
    Check(cards.size() == 1, "the other vendor's card is found");
    Check(OrvelSimulationCalls("nvapi ") == 0, "NVAPI is not called");
}

static void RefusesAMissingFile()
{
    const SimulatedMachine machine("no-such-machine");
    Check(!machine.IsInPlace(), "a missing file is rejected");
    Check(strstr(machine.Problem(), "no-such-machine") != nullptr, "the problem names the file");
}

struct Test {
    const char* Name;
    void (*Run)();
};

constexpr Test tests[] = {
    {"finds-both-chips", FindsBothChips},
    {"asks-drivers-once", AsksDriversOnce},
    {"reports-a-missing-driver", ReportsAMissingDriver},
    {"refuses-a-missing-file", RefusesAMissingFile},
};

int main(int argc, char** argv)
{
    if (FAILED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) {
        return 2;
    }
    int count = 0;
    for (const Test& test : tests) {
        if (argc == 2 && strcmp(argv[1], test.Name) == 0) {
            test.Run();
            ++count;
        }
    }
    CoUninitialize();
    if (count == 0) {
        printf("usage: card-tests TEST\n");
        return 2;
    }
    return failures > 0 ? 1 : 0;
}
