#pragma once

#include <cstdint>

#include "platform/Handles.h"
#include "vendors/amd/AdlTypes.h"

namespace orvel::shared::enumeration {

struct IADLXGPU;
struct IADLXPerformanceMonitoringServices;

/// A context of AMD's Display Library ("atiadlxx.dll"), and properties of its adapters.
///
/// Construction never fails: without the library there is no context, and every property has its default, as does one whose
/// function the installed driver lacks. An adapter is identified by its ADL index.
class ADLWrapper {
public:
    ADLWrapper();
    ADLWrapper(const ADLWrapper&) = delete;
    ADLWrapper& operator=(const ADLWrapper&) = delete;
    /// See Destroy.
    ~ADLWrapper();

    /// Destroys the context and releases the library. May be called again, even after the destructor; then it only logs.
    void Destroy() noexcept;

    /// The context; null if there is none.
    ADL_CONTEXT_HANDLE GetContext() const { return context; }

    /// Number of processing elements; 0 when ADL does not report it. Source: ADL2_Adapter_Graphic_Core_Info_Get.
    uint32_t GetCores(int adapter) const;
    /// Number of render output units; 0 when ADL does not report it. Source: ADL2_Adapter_Graphic_Core_Info_Get.
    uint32_t GetRops(int adapter) const;
    /// Whether the adapter supports CrossFire. Source: ADL2_Adapter_Crossfire_Get.
    bool GetCrossfire(int adapter) const;
    /// Maximum number of PCI Express lanes. Source: ADL_Overdrive5_CurrentActivity_Get.
    /// Intended: taken when ADL reports failure, 0 when it reports success.
    uint32_t GetPciLanes(int adapter) const;
    /// ECC of the card's memory: 0 none, 1 supported, 2 enabled. Sources: ADL2_Workstation_ECC_Caps,
    /// ADL2_Workstation_ECC_Get. Intended: a successful call for the mode gives 1 whatever the mode is.
    uint32_t GetEccStatus(int adapter) const;
    /// Single-bit errors. Source: ADL2_Workstation_ECCData_Get. Intended: taken when ADL reports failure, else 0.
    uint32_t GetEccSingleBitErrors(int adapter) const;
    /// Double-bit errors, by the same rule.
    uint32_t GetEccDoubleBitErrors(int adapter) const;

    /// Checks whether a pixel fill rate is available, and logs it. Intended: computes nothing.
    void GetPixelFillRate(IADLXPerformanceMonitoringServices& services, IADLXGPU& gpu, int adapter) const;

private:
    ADLGraphicCoreInfo GraphicCore(int adapter) const;

    ADL_CONTEXT_HANDLE context = nullptr;
    ADL2_Adapter_Crossfire_Get_t crossfireGet = nullptr;
    ADL2_Workstation_ECC_Caps_t eccCaps = nullptr;
    ADL2_Workstation_ECC_Get_t eccGet = nullptr;
    ADL2_Workstation_ECCData_Get_t eccDataGet = nullptr;
    ADL2_Adapter_Graphic_Core_Info_Get_t graphicCoreInfoGet = nullptr;
    ADL_Adapter_ObservedClockInfo_Get_t observedClockInfoGet = nullptr; // Intended: looked up, never called.
    ADL_Overdrive5_CurrentActivity_Get_t currentActivityGet = nullptr;
    ADL2_Main_Control_Destroy_t mainControlDestroy = nullptr;
    HMODULE module; // not a ModuleHandle: it must be null even after destruction, see Destroy
};

} // namespace orvel::shared::enumeration
