// A small host: enumerates once and prints a line for each card. It uses nothing but the library and the C library.
//
//   plain                    this computer
//   plain MACHINE.json       a simulated machine, as a host's own tests would use it

#include <stdio.h>

#include <objbase.h>

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

int main(int argc, char** argv)
{
    CoInitializeEx(nullptr, COINIT_MULTITHREADED); // the library leaves COM to its host
    if (argc > 1) {
        const char* problem = "";
        if (OrvelSimulateMachine(argv[1], &problem) != 0) {
            fprintf(stderr, "%s\n", problem);
            return 2;
        }
    }
    SetGraphicCardLog(PrintLine, 3, nullptr);
    GraphicCardEnumeration cards;
    try {
        cards.QueryGraphicCards();
    } catch (long status) {
        fprintf(stderr, "The memory modules cannot be asked for: 0x%08lX\n", static_cast<unsigned long>(status));
        return 1;
    }
    for (int i = 0; i < static_cast<int>(cards.size()); ++i) {
        PrintCard(*cards.get(i));
    }
    printf("%d cards\n", static_cast<int>(cards.size()));
    return 0;
}
