// apartments MACHINE PLUGIN early|late MAIN WORKER: puts a machine in place on one thread and enumerates on another. MAIN is
// sta or mta; WORKER is sta, mta, "none" for a thread without COM, or "idle" for no enumeration. PLUGIN enumerates; it is
// loaded before the machine is in place (early) or afterwards (late). The source is the same for every ABI.

#include <stdio.h>
#include <string.h>

#include <windows.h>

#include <objbase.h>
#include <shellapi.h>

#include "OrvelSimulation.h"

struct Worker {
    const char* Apartment;
    int (*CountCards)();
    int Cards;
};

static long Enter(const char* apartment)
{
    return CoInitializeEx(nullptr, strcmp(apartment, "sta") == 0 ? COINIT_APARTMENTTHREADED : COINIT_MULTITHREADED);
}

static DWORD WINAPI Run(LPVOID argument)
{
    auto* const worker = static_cast<Worker*>(argument);
    const bool hasCom = strcmp(worker->Apartment, "none") != 0;
    if (hasCom && FAILED(Enter(worker->Apartment))) {
        return 1;
    }
    worker->Cards = worker->CountCards();
    if (hasCom) {
        CoUninitialize();
    }
    return 0;
}

static HMODULE LoadPlugin()
{
    int count = 0;
    wchar_t** const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    return LoadLibraryExW(arguments[2], nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
}

static void Enumerate(HMODULE plugin, const char* apartment)
{
    Worker worker = {apartment, nullptr, -1};
    worker.CountCards = reinterpret_cast<int (*)()>(reinterpret_cast<void*>(GetProcAddress(plugin, "CountCards")));
    const HANDLE thread = CreateThread(nullptr, 0, Run, &worker, 0, nullptr);
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
    printf("cards: %d\n", worker.Cards);
}

int main(int argc, char** argv)
{
    if (argc < 6 || FAILED(Enter(argv[4]))) {
        return 2;
    }
    const bool isEarly = strcmp(argv[3], "early") == 0;
    HMODULE plugin = isEarly ? LoadPlugin() : nullptr;
    const char* problem = "";
    if (OrvelSimulateMachine(argv[1], &problem) != ORVEL_SIMULATION_IN_PLACE) {
        printf("%s\n", problem);
        return 2;
    }
    plugin = isEarly ? plugin : LoadPlugin();
    if (strcmp(argv[5], "idle") != 0) {
        Enumerate(plugin, argv[5]);
    }
    printf("report: %s\n", OrvelSimulationReport());
    OrvelEndSimulation();
    CoUninitialize();
    return 0;
}
