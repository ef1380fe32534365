#pragma once

#include <stddef.h>

#include "GraphicCardApi.h"

namespace orvel::shared::enumeration {

/// One graphics adapter: a flat, read-only record.
///
/// `GraphicCardEnumeration` builds and owns the records; a host only reads them. Every text is NUL-terminated, belongs to
/// the record and is valid as long as it; it is never null. Texts are UTF-8; those of NVAPI, NVML, ADLX and OpenCL are
/// passed on as the driver gives them, which is not always UTF-8. A property that its vendor does not report, or that could
/// not be read, holds the neutral value given at its getter. A finished record never changes: any number of threads may read
/// it.
class ORVEL_GRAPHIC_CARDS_API GraphicCardInfo {
public:
    /// Takes one value per property, in the order of the getters, and copies every text.
    /// No text may be null ("" means "no value"). Throws std::bad_alloc when memory is exhausted.
    // Made from properties/properties.toml by ./dev generate.
    // clang-format off
    GraphicCardInfo(unsigned int availabilityCode, const char* availabilityStatus, unsigned int configError,
                    const char* configErrorStatus, bool userConfig, const char* currentResolution,
                    unsigned int currentRefreshRate, const char* driverVersion, bool isAeroEnabled,
                    const char* graphicsCardSn, unsigned int busId, const char* deviceId, const char* subsystemId,
                    const char* cardName, const char* chipName, const char* manufacturer, const char* busInterface,
                    float pcieGeneration, float pciTransferRate, unsigned int pciLanes, float pixelFillRate,
                    float textureFillRate, float cudaCapability, unsigned int maxTemperature, unsigned int temperateSlowdown,
                    unsigned int temperatureShutdown, const char* gpuType, bool multiGpuSupport, float gpuClockMax,
                    float gpuBoostClock, float memoryClockMax, float memoryBoostClock, unsigned int memorySize,
                    unsigned int memorySharedSize, const char* memoryType, float memoryBandwidth,
                    unsigned int memoryBusWidth, unsigned int cores, unsigned int shaders, const char* driverReleaseDate,
                    const char* biosVersion, bool nvidiaSli, bool amdCrossfire, unsigned int eccStatus,
                    unsigned int eccSingleBitErrors, unsigned int eccDoubleBitErrors, const char* adapterName,
                    unsigned int adapterRam, const char* adapterStatus);
    // clang-format on

    /// Releases the record's texts.
    ~GraphicCardInfo();

    /// Copies every property, the texts by address only: afterwards both records share the source's texts, and the target's
    /// own are abandoned. Meant for records of which only one will ever be destroyed; pass records by pointer instead.
    ORVEL_GRAPHIC_CARDS_SHALLOW GraphicCardInfo& operator=(const GraphicCardInfo& other);

    GraphicCardInfo(const GraphicCardInfo&) = delete;

    // Made from properties/properties.toml by ./dev generate.
    // clang-format off
    /// State of the device as the code of WMI's `Availability` (1 to 21; 3: running at full power).
    unsigned int GetAvailabilityCode() const;
    /// Name of GetAvailabilityCode, such as "RunningFullPower".
    const char* GetAvailabilityStatus() const;
    /// Problem that Windows has with the device, as WMI's `ConfigManagerErrorCode` (0 to 31); 0: none, or not readable.
    unsigned int GetConfigError() const;
    /// Name of GetConfigError, such as "DeviceWorkingProperly".
    const char* GetConfigErrorStatus() const;
    /// Whether the device uses a configuration that a user defined (WMI `ConfigManagerUserConfig`); false: no, or not
    /// readable.
    bool GetUserConfig() const;
    /// Current resolution in pixels, width "x" height, such as "1920x1080"; "": no screen, or not readable.
    const char* GetCurrentResolution() const;
    /// Current refresh rate in hertz; 0: no screen, or not readable.
    unsigned int GetCurrentRefreshRate() const;
    /// Version of the display driver, such as "27.20.100.9168"; "": not readable.
    const char* GetDriverVersion() const;
    /// Whether desktop composition is on.
    bool GetIsAeroEnabled() const;
    /// Serial number. Intel and AMD: the machine's, from its BIOS, the same for every card ("": not readable). NVIDIA: the
    /// card's own ("Unknown": the card does not report it, as most GeForce cards).
    const char* GetGraphicsCardSn() const;
    /// PCI bus number; 0: bus 0, or not found. Two equal Intel or AMD cards report the same bus.
    unsigned int GetBusId() const;
    /// PCI device identifier, 4 hexadecimal digits, such as "5917"; NVIDIA: lower case; "": not readable.
    const char* GetDeviceId() const;
    /// PCI subsystem identifier, device "-" vendor, such as "225D-17AA"; NVIDIA: lower case; "": not readable.
    const char* GetSubsystemId() const;
    /// Marketing name of the card; "": not readable.
    const char* GetCardName() const;
    /// Name of the graphics chip. Intel: derived from the card name; NVIDIA: the card name; AMD: the OpenCL device of the
    /// same name; "": not known.
    const char* GetChipName() const;
    /// "Intel", "Nvidia" or "AMD".
    const char* GetManufacturer() const;
    /// "PCI", "AGP", "PCI Express" or "FPCI"; only NVIDIA reports it, "" otherwise.
    const char* GetBusInterface() const;
    /// Generation of the PCI Express link at this moment (an idle card may lower it); only NVIDIA reports it, 0 otherwise.
    float GetPcieGeneration() const;
    /// Highest transfer rate of the PCI Express link in MB/s; only NVIDIA reports it, 0 otherwise.
    float GetPciTransferRate() const;
    /// Lanes of the PCI Express link. NVIDIA: at this moment; Intel: always 0. AMD: the maximum, taken from a call that ADL
    /// reports as failed, and 0 when it reports success.
    unsigned int GetPciLanes() const;
    /// Pixel fill rate in gigapixels per second; only computed for Intel, 0 otherwise.
    float GetPixelFillRate() const;
    /// Texture fill rate in gigatexels per second; only computed for Intel, 0 otherwise.
    float GetTextureFillRate() const;
    /// CUDA compute capability, major.minor as a number, such as 8.6; only NVIDIA has it, 0 otherwise.
    float GetCudaCapability() const;
    /// Maximum operating temperature in degrees Celsius; only NVIDIA reports it, 0 otherwise.
    unsigned int GetMaxTemperature() const;
    /// Temperature in degrees Celsius at which the card slows down; only NVIDIA reports it, 0 otherwise.
    unsigned int GetTemperateSlowdown() const;
    /// Temperature in degrees Celsius at which the card shuts down; only NVIDIA reports it, 0 otherwise.
    unsigned int GetTemperatureShutdown() const;
    /// NVIDIA: "Integrated", "Discrete", "Unknown", or "UNKNOWN" when it cannot be read. Intel: the kind of the adapter's
    /// converter, such as "Internal" ("": not reported). AMD: always "".
    const char* GetGpuType() const;
    /// Whether cards are linked for rendering together; only NVIDIA reports it, false otherwise.
    bool GetMultiGpuSupport() const;
    /// Clock of the GPU in MHz; Intel: the highest; NVIDIA: as the driver reports it; AMD: always 0.
    float GetGpuClockMax() const;
    /// Boost clock of the GPU in MHz; NVIDIA: the same as GetGpuClockMax; Intel and AMD: always 0.
    float GetGpuBoostClock() const;
    /// Clock of the memory in MHz. NVIDIA: the card's; Intel and AMD: the machine's, half of its fastest module's rate; 0:
    /// not readable.
    float GetMemoryClockMax() const;
    /// NVIDIA: the same as GetMemoryClockMax. Intel: repeats the GPU's clock, in MHz. AMD: always 0.
    float GetMemoryBoostClock() const;
    /// Memory. Intel and AMD: in MiB; NVIDIA: the memory that is free now, in bytes, its low 32 bits; 0: not readable.
    unsigned int GetMemorySize() const;
    /// Memory shared with the system. Intel and AMD: in whole GiB; NVIDIA: in bytes, their low 32 bits; 0: none, or not
    /// readable.
    unsigned int GetMemorySharedSize() const;
    /// Type of the machine's memory (not the card's), such as "DDR4"; "UNKNOWN": not readable; AMD: "" for a type without
    /// name.
    const char* GetMemoryType() const;
    /// Memory bandwidth. NVIDIA: the card's, in GB/s. Intel and AMD: computed from the machine's memory modules; infinite on
    /// an AMD card when their type has no transfer factor, as DDR5. 0: not readable.
    float GetMemoryBandwidth() const;
    /// Width of the memory bus in bits. NVIDIA: the card's; Intel: that of the machine's first module; AMD: always 0.
    unsigned int GetMemoryBusWidth() const;
    /// Number of cores: NVIDIA CUDA cores, AMD stream processors, Intel compute units; 0: not readable. AMD: whatever ADL's
    /// call returns, so also what a failed call has written.
    unsigned int GetCores() const;
    /// Number of shaders: always the same as GetCores.
    unsigned int GetShaders() const;
    /// Date of the driver as WMI writes it, such as "20210108000000.000000-000"; "": not readable.
    const char* GetDriverReleaseDate() const;
    /// Version of the video BIOS; "": not found.
    const char* GetBiosVersion() const;
    /// Whether the card works in an SLI group; false for Intel and AMD.
    bool GetNvidiaSli() const;
    /// Whether the card supports CrossFire, whatever ADL's call returns; false for Intel and NVIDIA.
    bool GetAmdCrossfire() const;
    /// Error correction of the card's memory: 0 none, or not reported; 1 supported; 2 enabled. Intel: always 0. AMD: 1 also
    /// when it is enabled, where ADL's call for the mode succeeds; other numbers are passed on as ADL gives them.
    unsigned int GetEccStatus() const;
    /// Single-bit memory errors since start-up; 0: none, or not reported. AMD: taken from a call that ADL reports as failed,
    /// and 0 when it reports success.
    unsigned int GetEccSingleBitErrors() const;
    /// Double-bit memory errors since start-up, under the same rule.
    unsigned int GetEccDoubleBitErrors() const;
    /// Name of the video controller in WMI; "": not readable.
    const char* GetAdapterName() const;
    /// Memory of the video controller in WMI, in whole MiB; WMI saturates at 4095; 0: not readable.
    unsigned int GetAdapterRam() const;
    /// Status of the video controller in WMI, such as "OK"; "": not readable.
    const char* GetAdapterStatus() const;
    // clang-format on

#ifndef _MSC_VER
    /// Fills the first `size` bytes of the object with zeros. Called by code that MSVC generates before a constructor.
    void __autoclassinit2(size_t size);
#endif

private:
    // Made from properties/properties.toml by ./dev generate.
    // clang-format off
    unsigned int AvailabilityCode;
    const char* AvailabilityStatus;
    unsigned int ConfigError;
    const char* ConfigErrorStatus;
    bool UserConfig;
    const char* CurrentResolution;
    unsigned int CurrentRefreshRate;
    const char* DriverVersion;
    bool IsAeroEnabled;
    const char* GraphicsCardSn;
    unsigned int BusId;
    const char* DeviceId;
    const char* SubsystemId;
    const char* CardName;
    const char* ChipName;
    const char* Manufacturer;
    const char* BusInterface;
    float PcieGeneration;
    float PciTransferRate;
    unsigned int PciLanes;
    float PixelFillRate;
    float TextureFillRate;
    float CudaCapability;
    unsigned int MaxTemperature;
    unsigned int TemperateSlowdown;
    unsigned int TemperatureShutdown;
    const char* GpuType;
    bool MultiGpuSupport;
    float GpuClockMax;
    float GpuBoostClock;
    float MemoryClockMax;
    float MemoryBoostClock;
    unsigned int MemorySize;
    unsigned int MemorySharedSize;
    const char* MemoryType;
    float MemoryBandwidth;
    unsigned int MemoryBusWidth;
    unsigned int Cores;
    unsigned int Shaders;
    const char* DriverReleaseDate;
    const char* BiosVersion;
    bool NvidiaSli;
    bool AmdCrossfire;
    unsigned int EccStatus;
    unsigned int EccSingleBitErrors;
    unsigned int EccDoubleBitErrors;
    const char* AdapterName;
    unsigned int AdapterRam;
    const char* AdapterStatus;
    // clang-format on
};

} // namespace orvel::shared::enumeration
