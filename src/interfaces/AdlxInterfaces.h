#pragma once

// The interfaces of AMD's ADLX that are used here, slot by slot: the tables are the contract, so a slot that is not used
// keeps its place. Calls return an ADLX_RESULT. Lists, GPUs, services and metrics are reference counted and come with one
// reference for the caller; the system and the ADL mapping are not, and live as long as ADLX does.

#include <cstdint>
#include <utility>

namespace orvel::shared::enumeration {

using ADLX_RESULT = int32_t;

/// The version whose interfaces are declared here: 1.4.0, build 110. A driver refuses callers of newer versions than its
/// own.
constexpr uint64_t ADLX_DECLARED_VERSION = 0x000100040000006E;

constexpr ADLX_RESULT ADLX_OK = 0;
constexpr ADLX_RESULT ADLX_ALREADY_ENABLED = 1;
constexpr ADLX_RESULT ADLX_ALREADY_INITIALIZED = 2;
constexpr ADLX_RESULT ADLX_FAIL = 3;
constexpr ADLX_RESULT ADLX_INVALID_ARGS = 4;
constexpr ADLX_RESULT ADLX_BAD_VER = 5;
constexpr ADLX_RESULT ADLX_NOT_SUPPORTED = 12;

/// Whether a result is a success; "already enabled" and "already initialised" are too.
constexpr bool Succeeded(ADLX_RESULT result)
{
    return result >= ADLX_OK && result <= ADLX_ALREADY_INITIALIZED;
}

// clang-format off: one slot a line.

struct IADLXInterface {
    virtual long __stdcall Acquire() = 0;
    virtual long __stdcall Release() = 0;
    virtual ADLX_RESULT __stdcall QueryInterface(const wchar_t* id, void** object) = 0;
};

struct IADLXGPU : IADLXInterface {
    virtual ADLX_RESULT __stdcall VendorId(const char** vendorId) = 0; // 3
    virtual ADLX_RESULT __stdcall ASICFamilyType(int32_t* type) = 0;
    virtual ADLX_RESULT __stdcall Type(int32_t* type) = 0;
    virtual ADLX_RESULT __stdcall IsExternal(bool* isExternal) = 0;
    virtual ADLX_RESULT __stdcall Name(const char** name) = 0; // 7
    virtual ADLX_RESULT __stdcall DriverPath(const char** path) = 0;
    virtual ADLX_RESULT __stdcall PNPString(const char** pnpString) = 0; // 9
    virtual ADLX_RESULT __stdcall HasDesktops(bool* hasDesktops) = 0;
    virtual ADLX_RESULT __stdcall TotalVRAM(uint32_t* mebibytes) = 0; // 11
    virtual ADLX_RESULT __stdcall VRAMType(const char** type) = 0;
    virtual ADLX_RESULT __stdcall BIOSInfo(const char** part, const char** version, const char** date) = 0;
    virtual ADLX_RESULT __stdcall DeviceId(const char** deviceId) = 0; // 14
    virtual ADLX_RESULT __stdcall RevisionId(const char** revisionId) = 0;
    virtual ADLX_RESULT __stdcall SubSystemId(const char** subSystemId) = 0;
    virtual ADLX_RESULT __stdcall SubSystemVendorId(const char** subSystemVendorId) = 0;
    virtual ADLX_RESULT __stdcall UniqueId(int32_t* uniqueId) = 0; // 18
};

/// Since ADLX 1.2.
struct IADLXGPU1 : IADLXGPU {
    virtual ADLX_RESULT __stdcall PCIBusType(int32_t* type) = 0;
    virtual ADLX_RESULT __stdcall PCIBusLaneWidth(uint32_t* lanes) = 0;
    virtual ADLX_RESULT __stdcall MultiGPUMode(int32_t* mode) = 0;
    virtual ADLX_RESULT __stdcall ProductName(const char** name) = 0; // 22
};

struct ADLX_LUID {
    uint32_t lowPart;
    int32_t highPart;
};

/// Since ADLX 1.4. Slots that are not called have no arguments here.
struct IADLXGPU2 : IADLXGPU1 {
    virtual ADLX_RESULT __stdcall IsPowerOff(bool* isOff) = 0; // 23
    virtual ADLX_RESULT __stdcall PowerOn() = 0;
    virtual ADLX_RESULT __stdcall StartPowerOff() = 0;
    virtual ADLX_RESULT __stdcall AbortPowerOff() = 0;
    virtual ADLX_RESULT __stdcall IsSupportedApplicationList(bool* isSupported) = 0;
    virtual ADLX_RESULT __stdcall GetApplications() = 0;
    virtual ADLX_RESULT __stdcall AMDSoftwareReleaseDate(uint32_t* year, uint32_t* month, uint32_t* day) = 0;
    virtual ADLX_RESULT __stdcall AMDSoftwareEdition(const char** edition) = 0;
    virtual ADLX_RESULT __stdcall AMDSoftwareVersion(const char** version) = 0;
    virtual ADLX_RESULT __stdcall DriverVersion(const char** version) = 0;
    virtual ADLX_RESULT __stdcall AMDWindowsDriverVersion(const char** version) = 0;
    virtual ADLX_RESULT __stdcall LUID(ADLX_LUID* luid) = 0; // 34
};

struct IADLXGPUList : IADLXInterface {
    virtual uint32_t __stdcall Size() = 0; // 3
    virtual bool __stdcall Empty() = 0;
    virtual uint32_t __stdcall Begin() = 0;
    virtual uint32_t __stdcall End() = 0;
    virtual ADLX_RESULT __stdcall At(uint32_t index, IADLXInterface** item) = 0;
    virtual ADLX_RESULT __stdcall Clear() = 0;
    virtual ADLX_RESULT __stdcall Remove_Back() = 0;
    virtual ADLX_RESULT __stdcall Add_Back(IADLXInterface* item) = 0;
    virtual ADLX_RESULT __stdcall At_GPUList(uint32_t index, IADLXGPU** gpu) = 0; // 11
};

struct IADLXGPUMetricsSupport : IADLXInterface {
    virtual ADLX_RESULT __stdcall IsSupportedGPUUsage(bool* isSupported) = 0;
    virtual ADLX_RESULT __stdcall IsSupportedGPUClockSpeed(bool* isSupported) = 0; // 4
};

struct IADLXGPUMetrics : IADLXInterface {
    virtual ADLX_RESULT __stdcall TimeStamp(int64_t* milliseconds) = 0;
    virtual ADLX_RESULT __stdcall GPUUsage(double* percent) = 0;
    virtual ADLX_RESULT __stdcall GPUClockSpeed(int32_t* megahertz) = 0; // 5
};

struct IADLXPerformanceMonitoringServices : IADLXInterface {
    virtual ADLX_RESULT __stdcall GetSamplingIntervalRange(void* range) = 0;
    virtual ADLX_RESULT __stdcall SetSamplingInterval(int32_t milliseconds) = 0;
    virtual ADLX_RESULT __stdcall GetSamplingInterval(int32_t* milliseconds) = 0;
    virtual ADLX_RESULT __stdcall GetMaxPerformanceMetricsHistorySizeRange(void* range) = 0;
    virtual ADLX_RESULT __stdcall SetMaxPerformanceMetricsHistorySize(int32_t seconds) = 0;
    virtual ADLX_RESULT __stdcall GetMaxPerformanceMetricsHistorySize(int32_t* seconds) = 0;
    virtual ADLX_RESULT __stdcall ClearPerformanceMetricsHistory() = 0;
    virtual ADLX_RESULT __stdcall GetCurrentPerformanceMetricsHistorySize(int32_t* seconds) = 0;
    virtual ADLX_RESULT __stdcall StartPerformanceMetricsTracking() = 0;
    virtual ADLX_RESULT __stdcall StopPerformanceMetricsTracking() = 0;
    virtual ADLX_RESULT __stdcall GetAllMetricsHistory(int32_t start, int32_t stop, void** metrics) = 0;
    virtual ADLX_RESULT __stdcall GetGPUMetricsHistory(IADLXGPU* gpu, int32_t start, int32_t stop, void** metrics) = 0;
    virtual ADLX_RESULT __stdcall GetSystemMetricsHistory(int32_t start, int32_t stop, void** metrics) = 0;
    virtual ADLX_RESULT __stdcall GetFPSHistory(int32_t start, int32_t stop, void** metrics) = 0;
    virtual ADLX_RESULT __stdcall GetCurrentAllMetrics(void** metrics) = 0;
    virtual ADLX_RESULT __stdcall GetCurrentGPUMetrics(IADLXGPU* gpu, IADLXGPUMetrics** metrics) = 0; // 18
    virtual ADLX_RESULT __stdcall GetCurrentSystemMetrics(void** metrics) = 0;
    virtual ADLX_RESULT __stdcall GetCurrentFPS(void** metrics) = 0;
    virtual ADLX_RESULT __stdcall GetSupportedGPUMetrics(IADLXGPU* gpu, IADLXGPUMetricsSupport** support) = 0; // 21
};

/// Not reference counted.
struct IADLXSystem {
    virtual ADLX_RESULT __stdcall HybridGraphicsType(int32_t* type) = 0;
    virtual ADLX_RESULT __stdcall GetGPUs(IADLXGPUList** gpus) = 0; // 1
    virtual ADLX_RESULT __stdcall QueryInterface(const wchar_t* id, void** object) = 0;
    virtual ADLX_RESULT __stdcall GetDisplaysServices(void** services) = 0;
    virtual ADLX_RESULT __stdcall GetDesktopsServices(void** services) = 0;
    virtual ADLX_RESULT __stdcall GetGPUsChangedHandling(void** handling) = 0;
    virtual ADLX_RESULT __stdcall EnableLog(int32_t mode, int32_t severity, void* logger, const wchar_t* file) = 0;
    virtual ADLX_RESULT __stdcall Get3DSettingsServices(void** services) = 0;
    virtual ADLX_RESULT __stdcall GetGPUTuningServices(void** services) = 0;
    virtual ADLX_RESULT __stdcall GetPerformanceMonitoringServices(IADLXPerformanceMonitoringServices** services) = 0; // 9
};

/// Not reference counted.
struct IADLMapping {
    virtual ADLX_RESULT __stdcall GetADLXGPUFromBdf(int32_t bus, int32_t device, int32_t function, IADLXGPU** gpu) = 0;
    virtual ADLX_RESULT __stdcall GetADLXGPUFromAdlAdapterIndex(int32_t adapter, IADLXGPU** gpu) = 0;
    virtual ADLX_RESULT __stdcall BdfFromADLXGPU(IADLXGPU* gpu, int32_t* bus, int32_t* device, int32_t* function) = 0;
    virtual ADLX_RESULT __stdcall AdlAdapterIndexFromADLXGPU(IADLXGPU* gpu, int32_t* adapter) = 0; // 3
};

// clang-format on

/// One reference to a counted ADLX object, released on destruction.
template <typename Interface>
class AdlxPtr {
public:
    AdlxPtr() = default;
    AdlxPtr(const AdlxPtr&) = delete;
    AdlxPtr& operator=(const AdlxPtr&) = delete;
    ~AdlxPtr()
    {
        if (object) {
            object->Release();
        }
    }

    /// Makes the call that returns the object with a reference, on an empty pointer. Returns whether there is an object; the
    /// output of a failed call is ignored.
    template <typename Call>
    bool Receive(Call call)
    {
        Interface* received = nullptr;
        if (Succeeded(call(&received))) {
            object = received;
        }
        return object != nullptr;
    }

    Interface* operator->() const { return object; }
    Interface& operator*() const { return *object; }
    explicit operator bool() const { return object != nullptr; }

private:
    Interface* object = nullptr;
};

} // namespace orvel::shared::enumeration
