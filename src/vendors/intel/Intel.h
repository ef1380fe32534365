#pragma once

#include <string>

#include "formulas/PnpDeviceId.h"
#include "platform/OpenCLWrapper.h"
#include "record/GraphicCardProperties.h"
#include "system/AdapterRegistry.h"
#include "vendors/BaseGraphicCard.h"

namespace orvel::shared::enumeration {

/// Enumerates Intel's adapters from WMI, the registry, the machine's memory modules, DXGI and OpenCL; Intel has no
/// vendor interface of its own.
class Intel : public BaseGraphicCard {
public:
    /// Appends one record per Intel adapter that WMI reports on the PCI bus.
    /// Throws std::runtime_error ("Failed to load opencl.dll"; "Argument out of range" for a memory type without a transfer
    /// factor), std::invalid_argument and std::out_of_range for texts that do not convert and codes without a name, and the
    /// status (`long`) of a failed query for the memory modules.
    void QueryInfo(GraphicCardList& list) override;

private:
    /// The sources that all adapters of a run share.
    struct Sources {
        OpenCLWrapper OpenCl;
        AdapterRegistry Registry;
        std::string SerialNumber;
    };

    GraphicCardProperties ReadAdapter(wmi::WMIClient& client, Sources& sources) const;
    PnpDeviceId ReadIdentity(wmi::WMIClient& client, Sources& sources, GraphicCardProperties& card) const;
    void ReadFillRates(const OpenCLWrapper& opencl, const std::string& vendorId, GraphicCardProperties& card) const;
    void ReadClocksAndMemory(wmi::WMIClient& client, Sources& sources, const PnpDeviceId& id,
                             GraphicCardProperties& card) const;
    void ReadCommonProperties(wmi::WMIClient& client, GraphicCardProperties& card) const;
};

} // namespace orvel::shared::enumeration
