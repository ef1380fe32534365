// Prints the cards of a simulated machine: simulated MACHINE.json. The path may contain any Unicode character.

#include <stdio.h>

#include <windows.h>

#include <objbase.h>
#include <shellapi.h>

#include "GraphicCardEnumeration.h"
#include "GraphicCardInfo.h"
#include "GraphicCardLog.h"
#include "OrvelSimulation.h"

using namespace orvel::shared::enumeration;

static void PrintLine(int severity, const char*, const char* message, void*)
{
    if (severity <= 3) {
        fprintf(stderr, "graphics cards: %s\n", message);
    }
}

static void PrintCard(const GraphicCardInfo& card)
{
    printf("%s: %s, driver %s of %s\n", card.GetManufacturer(), card.GetCardName(), card.GetDriverVersion(),
           card.GetDriverReleaseDate());
    printf("  %s, %u Hz, bus %u, device %s, subsystem %s\n", card.GetCurrentResolution(), card.GetCurrentRefreshRate(),
           card.GetBusId(), card.GetDeviceId(), card.GetSubsystemId());
    printf("  %.2f MHz, memory %u, %s, %.3f, %u cores, ECC %u, composition %s\n", static_cast<double>(card.GetGpuClockMax()),
           card.GetMemorySize(), card.GetMemoryType(), static_cast<double>(card.GetMemoryBandwidth()), card.GetCores(),
           card.GetEccStatus(), card.GetIsAeroEnabled() ? "on" : "off");
}

// Gets the argument as UTF-8. `argv` is in the computer's code page, which may lack characters of a path.
static bool GetUtf8Argument(int index, char* text, int bytes)
{
    int count = 0;
    wchar_t** const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    const bool isThere = arguments != nullptr && index < count;
    const bool fits = isThere && WideCharToMultiByte(CP_UTF8, 0, arguments[index], -1, text, bytes, nullptr, nullptr) > 0;
    LocalFree(arguments);
    return fits;
}

static int PrintCards()
{
    GraphicCardEnumeration cards;
    try {
        cards.QueryGraphicCards();
    } catch (long status) {
        fprintf(stderr, "The query for the memory modules failed: 0x%08lX\n", static_cast<unsigned long>(status));
        return 1;
    }
    for (int i = 0; i < static_cast<int>(cards.size()); ++i) {
        PrintCard(*cards.get(i));
    }
    printf("%d cards\n", static_cast<int>(cards.size()));
    return 0;
}

int main()
{
    SetConsoleOutputCP(CP_UTF8); // the library's texts are UTF-8
    char path[1024];
    if (!GetUtf8Argument(1, path, sizeof path)) {
        fprintf(stderr, "usage: simulated MACHINE.json\n");
        return 2;
    }
    if (FAILED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) {
        return 1;
    }
    const char* problem = "";
    if (OrvelSimulateMachine(path, &problem) != ORVEL_SIMULATION_IN_PLACE) {
        fprintf(stderr, "%s\n", problem);
        return 2;
    }
    SetGraphicCardLog(PrintLine, 3, nullptr);
    const int status = PrintCards();
    OrvelEndSimulation();
    CoUninitialize();
    return status;
}
