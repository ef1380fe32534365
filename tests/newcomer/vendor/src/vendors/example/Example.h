#pragma once

#include "vendors/BaseGraphicCard.h"

namespace orvel::shared::enumeration {

/// Enumerates the adapters of a vendor without an interface of its own: all values come from WMI.
class Example : public BaseGraphicCard {
public:
    /// Appends one record per adapter that WMI lists. Throws std::out_of_range for codes without a name, and the status
    /// (`long`) of a failed query for the memory modules.
    void QueryInfo(GraphicCardList& list) override;

private:
    GraphicCardProperties ReadAdapter(wmi::WMIClient& client) const;
};

} // namespace orvel::shared::enumeration
