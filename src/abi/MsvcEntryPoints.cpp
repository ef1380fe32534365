// The exports for MSVC hosts where the ABIs differ in more than the name: MSVC constructors return their object, and MSVC
// handlers catch only MSVC exceptions. MsvcExports.def defines the exported names.

#include <cstring>
#include <new>

#include "GraphicCardEnumeration.h"
#include "GraphicCardInfo.h"
#include "abi/MsvcException.h"

using orvel::shared::enumeration::CallForMsvc;
using orvel::shared::enumeration::GraphicCardEnumeration;
using orvel::shared::enumeration::GraphicCardInfo;

extern "C" {

void* GraphicCardEnumeration_MsvcConstructor(void* storage)
{
    CallForMsvc([&] { new (storage) GraphicCardEnumeration; });
    return storage;
}

void GraphicCardEnumeration_MsvcQueryGraphicCards(GraphicCardEnumeration* enumeration)
{
    CallForMsvc([&] { enumeration->QueryGraphicCards(); });
}

// Made from properties/properties.toml by ./dev generate.
// clang-format off
void* GraphicCardInfo_MsvcConstructor(
    void* storage, unsigned int availabilityCode, const char* availabilityStatus, unsigned int configError,
    const char* configErrorStatus, bool userConfig, const char* currentResolution, unsigned int currentRefreshRate,
    const char* driverVersion, bool isAeroEnabled, const char* graphicsCardSn, unsigned int busId, const char* deviceId,
    const char* subsystemId, const char* cardName, const char* chipName, const char* manufacturer, const char* busInterface,
    float pcieGeneration, float pciTransferRate, unsigned int pciLanes, float pixelFillRate, float textureFillRate,
    float cudaCapability, unsigned int maxTemperature, unsigned int temperateSlowdown, unsigned int temperatureShutdown,
    const char* gpuType, bool multiGpuSupport, float gpuClockMax, float gpuBoostClock, float memoryClockMax,
    float memoryBoostClock, unsigned int memorySize, unsigned int memorySharedSize, const char* memoryType,
    float memoryBandwidth, unsigned int memoryBusWidth, unsigned int cores, unsigned int shaders,
    const char* driverReleaseDate, const char* biosVersion, bool nvidiaSli, bool amdCrossfire, unsigned int eccStatus,
    unsigned int eccSingleBitErrors, unsigned int eccDoubleBitErrors, const char* adapterName, unsigned int adapterRam,
    const char* adapterStatus)
{
    CallForMsvc([&] {
        new (storage) GraphicCardInfo(
            availabilityCode, availabilityStatus, configError, configErrorStatus, userConfig, currentResolution,
            currentRefreshRate, driverVersion, isAeroEnabled, graphicsCardSn, busId, deviceId, subsystemId, cardName,
            chipName, manufacturer, busInterface, pcieGeneration, pciTransferRate, pciLanes, pixelFillRate, textureFillRate,
            cudaCapability, maxTemperature, temperateSlowdown, temperatureShutdown, gpuType, multiGpuSupport, gpuClockMax,
            gpuBoostClock, memoryClockMax, memoryBoostClock, memorySize, memorySharedSize, memoryType, memoryBandwidth,
            memoryBusWidth, cores, shaders, driverReleaseDate, biosVersion, nvidiaSli, amdCrossfire, eccStatus,
            eccSingleBitErrors, eccDoubleBitErrors, adapterName, adapterRam, adapterStatus);
    });
    return storage;
}
// clang-format on

// Called by MSVC-generated code before a constructor; exported under the names of both classes and both compilers.
void ZeroFillObject(void* object, size_t size)
{
    std::memset(object, 0, size);
}

} // extern "C"
