#include "GraphicCardEnumeration.h"

#include <algorithm>
#include <array>
#include <exception>
#include <iterator>
#include <memory>
#include <string_view>

#include "WMISession.h"
#include "platform/ErrorText.h"
#include "platform/FloatingPoint.h"
#include "platform/LastStore.h"
#include "platform/Log.h"
#include "record/GraphicCardList.h"
#include "vendors/Vendors.h"
#include "vendors/amd/AMD.h"
#include "vendors/intel/Intel.h"
#include "vendors/nvidia/Nvidia.h"

namespace orvel::shared::enumeration {

namespace {

using Enumerator = std::unique_ptr<BaseGraphicCard>;

struct Factory {
    std::string_view Vendor; ///< its name in vendors/Vendors.h
    Enumerator (*Create)();
};

template <typename Class>
Enumerator Create()
{
    return std::make_unique<Class>();
}

// Intended: the order of creation is not the order of the run.
constexpr Factory factories[] = {{"Intel", Create<Intel>}, {"AMD", Create<AMD>}, {"NVIDIA", Create<Nvidia>}};

constexpr auto FactoryOf(const Vendor& vendor)
{
    return std::find_if(std::begin(factories), std::end(factories),
                        [&](const Factory& factory) { return factory.Vendor == vendor.Name; });
}

static_assert(std::all_of(std::begin(vendors), std::end(vendors),
                          [](const Vendor& vendor) { return FactoryOf(vendor) != std::end(factories); }) &&
                  std::size(vendors) == std::size(factories),
              "src/run/GraphicCardEnumeration.cpp has a factory for each vendor of src/vendors/Vendors.h");

/// The enumerators in the order of their creation.
auto CreateEnumerators()
{
    std::array<Enumerator, std::size(factories)> enumerators;
    std::transform(std::begin(factories), std::end(factories), enumerators.begin(),
                   [](const Factory& factory) { return factory.Create(); });
    return enumerators;
}

} // namespace

GraphicCardEnumeration::GraphicCardEnumeration() : list(new GraphicCardList) {}

GraphicCardEnumeration::~GraphicCardEnumeration()
{
    delete TakeForGood(list);
}

// Intended: both objects refer to one list afterwards, and the target's previous list is leaked.
GraphicCardEnumeration& GraphicCardEnumeration::operator=(const GraphicCardEnumeration& other) = default;

void GraphicCardEnumeration::QueryGraphicCards()
{
    const MaskedFloatingPoint masked;
    const auto enumerators = CreateEnumerators();
    const wmi::WMISession session; // shares query results between the vendors
    for (const Vendor& vendor : vendors) {
        try {
            enumerators[static_cast<std::size_t>(FactoryOf(vendor) - std::begin(factories))]->QueryInfo(*list);
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
