// A minimal host: enumerates once and prints a line for each card. It needs only the library and the C library.

#include <stdio.h>

#include <exception>

#include <objbase.h>

#include "GraphicCardEnumeration.h"
#include "GraphicCardInfo.h"
#include "GraphicCardLog.h"

using namespace orvel::shared::enumeration;

static void PrintLine(int severity, const char*, const char* message, void*)
{
    if (severity <= 3) { // errors and warnings
        fprintf(stderr, "graphics cards: %s\n", message);
    }
}

static int PrintCards()
{
    GraphicCardEnumeration cards;
    try {
        cards.QueryGraphicCards();
    } catch (long status) {
        fprintf(stderr, "The query for the memory modules failed: 0x%08lX\n", static_cast<unsigned long>(status));
        return 1;
    } catch (const std::exception& error) {
        fprintf(stderr, "The enumeration failed: %s\n", error.what());
        return 1;
    }
    for (int i = 0; i < static_cast<int>(cards.size()); ++i) {
        const GraphicCardInfo& card = *cards.get(i);
        printf("%s: %s, driver %s of %s\n", card.GetManufacturer(), card.GetCardName(), card.GetDriverVersion(),
               card.GetDriverReleaseDate());
    }
    printf("%d cards\n", static_cast<int>(cards.size()));
    return 0;
}

int main()
{
    if (FAILED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) { // the library does not initialise COM
        return 1;
    }
    SetGraphicCardLog(PrintLine, 3, nullptr);
    const int status = PrintCards();
    SetGraphicCardLog(nullptr, 0, nullptr);
    CoUninitialize();
    return status;
}
