/* A host in C: the log and version functions are C already, Cards.cpp wraps the records. */

#include <stdio.h>

#include <windows.h>

#include <objbase.h>

#include "Cards.h"
#include "GraphicCardLog.h"

static void PrintLine(int severity, const char* function, const char* message, void* context)
{
    (void)function;
    if (severity <= 3) {
        fprintf((FILE*)context, "graphics cards: %s\n", message);
    }
}

static void PrintCard(const Card* card, void* context)
{
    ++*(int*)context;
    printf("%s: %s, driver %s\n", card->Manufacturer, card->Name, card->DriverVersion);
}

int main(void)
{
    int count = 0;
    long status;
    if (!AreGraphicCardsHeadersServedBy(GetGraphicCardsVersion())) {
        fprintf(stderr, "orvel-graphic-cards-enumeration.dll is too old\n");
        return 1;
    }
    if (FAILED(CoInitializeEx(NULL, COINIT_MULTITHREADED))) {
        return 1;
    }
    SetGraphicCardLog(PrintLine, 3, stderr);
    status = ForEachCard(PrintCard, &count);
    SetGraphicCardLog(NULL, 0, NULL);
    CoUninitialize();
    printf("%d cards\n", count);
    return status == 0 ? 0 : 1;
}
