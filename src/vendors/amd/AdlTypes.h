#pragma once

namespace orvel::shared::enumeration {

// AMD's Display Library, as far as it is used here. Every field is a 4-byte integer; calls return 0 for success.

using ADL_CONTEXT_HANDLE = void*;
using ADL_MAIN_MALLOC_CALLBACK = void*(__stdcall*)(int);

struct ADLGraphicCoreInfo {
    int iGCGen;
    int iNumCUs;
    int iNumPEsPerCU;
    int iNumSIMDs;
    int iNumROPs;
    int iReserved[11];
};
static_assert(sizeof(ADLGraphicCoreInfo) == 64);

struct ADLCrossfireComb {
    int iNumLinkAdapter;
    int iAdaptLink[3];
};
static_assert(sizeof(ADLCrossfireComb) == 16);

struct ADLCrossfireInfo {
    int iErrorCode;
    int iState;
    int iSupported;
};
static_assert(sizeof(ADLCrossfireInfo) == 12);

struct ADLPMActivity {
    int iSize;
    int iEngineClock;
    int iMemoryClock;
    int iVddc;
    int iActivityPercent;
    int iCurrentPerformanceLevel;
    int iCurrentBusSpeed;
    int iCurrentBusLanes;
    int iMaximumBusLanes;
    int iReserved;
};
static_assert(sizeof(ADLPMActivity) == 40);

struct ADLECCData {
    int iSec;
    int iDed;
};
static_assert(sizeof(ADLECCData) == 8);

// The functions under their published names. ADL2_Main_Control_Create is published with three arguments; a fourth one is
// harmless, as the caller clears it.
using ADL2_Main_Control_Create_t = int (*)(ADL_MAIN_MALLOC_CALLBACK, int enumConnectedAdapters, ADL_CONTEXT_HANDLE*, int);
using ADL2_Main_Control_Destroy_t = int (*)(ADL_CONTEXT_HANDLE);
using ADL2_Adapter_Crossfire_Get_t = int (*)(ADL_CONTEXT_HANDLE, int adapter, ADLCrossfireComb*, ADLCrossfireInfo*);
using ADL2_Workstation_ECC_Caps_t = int (*)(ADL_CONTEXT_HANDLE, int adapter, int* supported);
using ADL2_Workstation_ECC_Get_t = int (*)(ADL_CONTEXT_HANDLE, int adapter, int* defaultMode, int* current, int* desired);
using ADL2_Workstation_ECCData_Get_t = int (*)(ADL_CONTEXT_HANDLE, int adapter, ADLECCData*);
using ADL2_Adapter_Graphic_Core_Info_Get_t = int (*)(ADL_CONTEXT_HANDLE, int adapter, ADLGraphicCoreInfo*);
using ADL_Adapter_ObservedClockInfo_Get_t = int (*)(int adapter, int* coreClock, int* memoryClock);
using ADL_Overdrive5_CurrentActivity_Get_t = int (*)(int adapter, ADLPMActivity*);

} // namespace orvel::shared::enumeration
