// A plug-in that enumerates. No exception leaves it: the host may have another compiler.

#include "GraphicCardEnumeration.h"

using namespace orvel::shared::enumeration;

// The number of cards, or -1 when the enumeration failed. The thread must have initialised COM.
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
