// Wraps the C++ records for C. No exception leaves this file.

#include "Cards.h"

#include <objbase.h>

#include "GraphicCardEnumeration.h"
#include "GraphicCardInfo.h"

using namespace orvel::shared::enumeration;

static long Enumerate(GraphicCardEnumeration& cards)
{
    try {
        cards.QueryGraphicCards();
        return S_OK;
    } catch (long status) { // the query for the memory modules failed
        return status;
    } catch (...) { // memory is exhausted
        return E_OUTOFMEMORY;
    }
}

long ForEachCard(CardCallback callback, void* context)
{
    GraphicCardEnumeration cards;
    const long status = Enumerate(cards);
    for (int i = 0; i < static_cast<int>(cards.size()); ++i) { // records from before a failure remain
        const GraphicCardInfo& record = *cards.get(i);
        const Card card = {record.GetManufacturer(), record.GetCardName(), record.GetDriverVersion()};
        callback(&card, context);
    }
    return status;
}
