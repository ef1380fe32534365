// A host that uses GraphicCards and checks the library's version. The source is the same for every ABI.

#include <stdio.h>

#include <objbase.h>

#include "GraphicCards.h"
#include "OrvelSimulation.h"

using namespace orvel::shared::enumeration;

static void Print(const char* what, const GraphicCards& cards)
{
    printf("%s: %d\n", what, static_cast<int>(cards.size()));
    for (const GraphicCard card : cards) {
        const std::string_view name = card.CardName();
        printf("%.*s, bus %u\n", static_cast<int>(name.size()), name.data(), card.BusId());
    }
}

static GraphicCards Enumerated()
{
    GraphicCards cards;
    cards.Enumerate();
    return cards;
}

int main(int argc, char** argv)
{
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    const char* problem = "";
    if (argc < 2 || OrvelSimulateMachine(argv[1], &problem) != 0) {
        printf("%s\n", problem);
        return 2;
    }
    printf("version %u, serves the headers: %d\n", GetGraphicCardsVersion(),
           AreGraphicCardsHeadersServedBy(GetGraphicCardsVersion()));
    printf("older %d, newer %d, other major %d\n", AreGraphicCardsHeadersServedBy(ORVEL_GRAPHIC_CARDS_VERSION_NUMBER - 1),
           AreGraphicCardsHeadersServedBy(ORVEL_GRAPHIC_CARDS_VERSION_NUMBER + 100),
           AreGraphicCardsHeadersServedBy(ORVEL_GRAPHIC_CARDS_VERSION_NUMBER + 10000));
    GraphicCards cards;
    Print("none yet", cards);
    cards = Enumerated();
    cards.Enumerate(); // a second time: the previous records are released
    Print("again", cards);
    GraphicCards moved = static_cast<GraphicCards&&>(cards);
    Print("moved from", cards);
    Print("moved", moved);
    printf("same bus: %d\n", moved[0].BusId() == moved[0].Info().GetBusId());
    return 0;
}
