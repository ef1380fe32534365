#pragma once

#include "record/GraphicCardProperties.h"
#include "vendors/BaseGraphicCard.h"
#include "vendors/nvidia/NvapiClient.h"
#include "vendors/nvidia/NvmlClient.h"

namespace orvel::shared::enumeration {

/// Enumerates NVIDIA's first GPU from NVAPI, NVML and WMI. Intended: other GPUs are ignored.
class Nvidia : public BaseGraphicCard {
public:
    /// Appends the record of NVAPI's first physical GPU, if there is one and the WMI query for it succeeds.
    /// Throws std::runtime_error where NVAPI, NVML or "opencl.dll" is not available, std::out_of_range ("invalid
    /// unordered_map<K, T> key") for a code without a name, and the status (`long`) of a failed query for the memory
    /// modules.
    void QueryInfo(GraphicCardList& list) override;

private:
    /// A GPU in each of the sources.
    struct Gpu {
        const NvapiClient& Nvapi;
        const NvmlClient& Nvml;
        NvPhysicalGpuHandle Handle;
        nvmlDevice_t Device;
    };

    GraphicCardProperties ReadGpu(const Gpu& gpu, wmi::WMIClient& client, const std::string& deviceId) const;
    void ReadEccAndCores(const Gpu& gpu, wmi::WMIClient& client, GraphicCardProperties& card) const;
    void ReadMemoryAndClocks(const Gpu& gpu, GraphicCardProperties& card) const;
    void ReadLimitsAndLink(const Gpu& gpu, GraphicCardProperties& card) const;
};

} // namespace orvel::shared::enumeration
