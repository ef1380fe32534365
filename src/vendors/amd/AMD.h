#pragma once

#include <string>

#include "formulas/PnpDeviceId.h"
#include "interfaces/AdlxInterfaces.h"
#include "platform/OpenCLWrapper.h"
#include "record/GraphicCardProperties.h"
#include "system/AdapterRegistry.h"
#include "vendors/BaseGraphicCard.h"
#include "vendors/amd/ADLWrapper.h"

namespace orvel::shared::enumeration {

/// Enumerates AMD's adapters: ADLX lists them; ADL, OpenCL, WMI, DXGI and the registry provide their properties.
class AMD : public BaseGraphicCard {
public:
    /// Appends one record per WMI row of each GPU that ADLX lists; so two equal cards give four records.
    /// Throws std::runtime_error ("Failed to load opencl.dll"), std::out_of_range and std::invalid_argument for texts that
    /// are too short or do not convert and codes without a name, and the status (`long`) of a failed query for the memory
    /// modules. Where a GPU's WMI query fails, ADLX intentionally stays loaded.
    void QueryInfo(GraphicCardList& list) override;

private:
    /// The sources that all GPUs of a run share.
    struct Sources {
        wmi::WMIClient& Client;
        const OpenCLWrapper& OpenCl;
        const ADLWrapper& Adl;
        std::string SerialNumber;
        AdapterRegistry Registry;
    };

    /// A GPU with its values from ADLX and ADL.
    struct Gpu {
        PnpDeviceId Id;
        GraphicCardProperties Card;
    };

    enum class Walk { Finished, QueryFailed };

    bool InitializeAdlx(const ADLWrapper& adl) const;
    Walk ReadGpus(Sources& sources, GraphicCardList& list) const;
    Gpu ReadGpu(IADLXGPU& gpu, AdlxPtr<IADLXPerformanceMonitoringServices>& services, const Sources& sources) const;
    void ReadAdl(const ADLWrapper& adl, int adapter, GraphicCardProperties& card) const;
    Walk ReadRows(const Gpu& gpu, Sources& sources, GraphicCardList& list) const;
    void ReadStatusAndDisplay(wmi::WMIClient& client, GraphicCardProperties& card) const;
    void ReadMachine(const Gpu& gpu, Sources& sources, GraphicCardProperties& card) const;
};

} // namespace orvel::shared::enumeration
