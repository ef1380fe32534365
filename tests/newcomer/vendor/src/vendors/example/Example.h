#pragma once

#include "vendors/BaseGraphicCard.h"

namespace orvel::shared::enumeration {

/// Enumerates the adapters of a vendor that has no interface of its own: everything is WMI's.
class Example : public BaseGraphicCard {
public:
    /// Appends one record per adapter that WMI lists. Throws std::out_of_range for codes without a name, and the status
    /// (`long`) of a failed query for the memory modules.
    void QueryInfo(GraphicCardList& list) override;

private:
    GraphicCardProperties ReadAdapter(wmi::WMIClient& client) const;
};

} // namespace orvel::shared::enumeration
