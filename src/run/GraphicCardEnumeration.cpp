#include "GraphicCardEnumeration.h"

#include <exception>
#include <memory>

#include "WMISession.h"
#include "platform/ErrorText.h"
#include "platform/FloatingPoint.h"
#include "platform/LastStore.h"
#include "platform/Log.h"
#include "record/GraphicCardList.h"
#include "vendors/amd/AMD.h"
#include "vendors/intel/Intel.h"
#include "vendors/nvidia/Nvidia.h"

namespace orvel::shared::enumeration {

GraphicCardEnumeration::GraphicCardEnumeration() : list(new GraphicCardList) {}

GraphicCardEnumeration::~GraphicCardEnumeration()
{
    delete TakeForGood(list);
}

// Intended: both objects refer to one list afterwards, and the target's own is abandoned.
GraphicCardEnumeration& GraphicCardEnumeration::operator=(const GraphicCardEnumeration& other) = default;

void GraphicCardEnumeration::QueryGraphicCards()
{
    const MaskedFloatingPoint masked;
    // Intended: the order of creation is not the order of the run.
    const std::shared_ptr<BaseGraphicCard> intel = std::make_shared<Intel>();
    const std::shared_ptr<BaseGraphicCard> amd = std::make_shared<AMD>();
    const std::shared_ptr<BaseGraphicCard> nvidia = std::make_shared<Nvidia>();
    const wmi::WMISession session; // what one vendor has asked, the next need not ask again
    for (const auto& vendor : {intel, nvidia, amd}) {
        try {
            vendor->QueryInfo(*list);
        } catch (const std::exception& error) {
            PLOGE << "Unexpected error occurred: " << TextOf(error);
        }
    }
}

std::size_t GraphicCardEnumeration::size() const
{
    return list->size();
}

GraphicCardInfo* GraphicCardEnumeration::get(int index) const
{
    return list->get(static_cast<std::size_t>(index)); // a negative index becomes one that is too large
}

} // namespace orvel::shared::enumeration

unsigned int GetGraphicCardsVersion()
{
    return ORVEL_GRAPHIC_CARDS_VERSION_NUMBER;
}
