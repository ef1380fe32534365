// nulls MACHINE: a host that passes null to the simulation. The source is the same for every ABI.

#include <stdio.h>

#include <objbase.h>

#include "GraphicCardEnumeration.h"
#include "OrvelSimulation.h"

using namespace orvel::shared::enumeration;

int main(int argc, char** argv)
{
    if (argc < 2 || FAILED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) {
        return 2;
    }
    const char* problem = "";
    printf("no path: %d", OrvelSimulateMachine(nullptr, &problem));
    printf(", %s\n", problem);
    printf("no path, no problem: %d\n", OrvelSimulateMachine(nullptr, nullptr));
    printf("no text: %d", OrvelSimulateMachineText(nullptr, "somewhere", &problem));
    printf(", %s\n", problem);
    printf("no source: %d", OrvelSimulateMachineText("{}", nullptr, &problem));
    printf(", %s\n", problem);
    printf("in place: %d\n", OrvelSimulateMachine(argv[1], nullptr));
    printf("no calls yet: %d, of null: %d\n", OrvelSimulationCalls(""), OrvelSimulationCalls(nullptr));
    GraphicCardEnumeration cards;
    cards.QueryGraphicCards();
    printf("NVML initialised: %d, NVML's functions: %d, connections: %d\n", OrvelSimulationCalls("nvml nvmlInit_v2"),
           OrvelSimulationCalls("nvml nvml") == OrvelSimulationCalls("nvml "), OrvelSimulationCalls("wmi connect"));
    printf("report: %s\n", OrvelSimulationReport());
    OrvelEndSimulation();
    return 0;
}
