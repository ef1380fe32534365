// A plug-in that enumerates. No exception leaves it: the host may be built with another compiler.

#include "GraphicCardEnumeration.h"

using namespace orvel::shared::enumeration;

// Returns the number of cards, or -1 if the enumeration fails. The thread must have initialised COM.
extern "C" __declspec(dllexport) int CountCards()
{
    try {
        GraphicCardEnumeration cards;
        cards.QueryGraphicCards();
        return static_cast<int>(cards.size());
    } catch (...) {
        return -1;
    }
}
