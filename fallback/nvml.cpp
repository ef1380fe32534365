// nvml.dll for computers without an NVIDIA driver.
//
// orvel-graphic-cards-enumeration.dll imports nvml.dll when it is loaded, so a host that must start on every computer ships
// this DLL beside its program. If the system folder has the driver's nvml.dll, every call is forwarded to it; otherwise the
// initialisation reports that no driver is loaded. The driver's DLL is loaded when the first session starts and released
// when the last one ends: a DLL must not load or free another one while it is itself being loaded or freed.

#include <atomic>
#include <mutex>
#include <string>

#include <windows.h>

namespace {

using Device = void*;
using Status = int;

constexpr Status success = 0;
constexpr Status uninitialized = 1;
constexpr Status driverNotLoaded = 9;
constexpr Status functionNotFound = 13;

HMODULE OwnModule()
{
    HMODULE module = nullptr;
    ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                         reinterpret_cast<LPCWSTR>(&OwnModule), &module);
    return module;
}

HMODULE LoadDriver()
{
    wchar_t folder[MAX_PATH];
    const UINT characters = ::GetSystemDirectoryW(folder, MAX_PATH);
    if (characters == 0 || characters >= MAX_PATH) {
        return nullptr;
    }
    // The full path is needed, because the bare name would find this DLL.
    const HMODULE found = ::LoadLibraryW((std::wstring(folder) + L"\\nvml.dll").c_str());
    if (found == OwnModule()) {
        ::FreeLibrary(found);
        return nullptr;
    }
    return found;
}

// The driver's nvml.dll is loaded only while it has sessions. NVML counts sessions, so this DLL counts them too.
std::mutex sessionMutex;
unsigned int sessions = 0;
std::atomic<HMODULE> driver = nullptr;

template <typename Function>
Function FindIn(HMODULE module, const char* function)
{
    return module ? reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(module, function))) : nullptr;
}

/// Releases the driver's DLL when no session is open in it.
void ReleaseUnused()
{
    if (sessions == 0) {
        if (const HMODULE unused = driver.exchange(nullptr)) {
            ::FreeLibrary(unused);
        }
    }
}

/// Forwards a call to the driver.
template <typename... Arguments>
Status Forward(const char* function, Arguments... arguments)
{
    if (!driver) {
        return uninitialized;
    }
    const auto call = FindIn<Status (*)(Arguments...)>(driver, function);
    return call ? call(arguments...) : functionNotFound;
}

const char* OwnErrorString(Status status)
{
    constexpr const char* texts[] = {
        "Success",
        "Uninitialized",
        "Invalid Argument",
        "Not Supported",
        "Insufficient Permissions",
        "Already Initialized",
        "Not Found",
        "Insufficient Size",
        "Insufficient External Power",
        "Driver Not Loaded",
        "Timeout",
        "Interrupt Request Issue",
        "NVML Shared Library Not Found",
        "Function Not Found",
        "Corrupted infoROM",
        "GPU is lost",
        "GPU requires reset",
        "GPU access blocked by the operating system",
        "Driver/library version mismatch",
        "In use by another client",
        "Insufficient Memory",
        "No data",
        "Vgpu ecc not supported",
        "Insufficient Resources",
        "Frequency not supported",
        "Argument version mismatch",
        "Deprecated",
        "Not Ready",
        "GPU Not Found",
        "Invalid state",
        "Reset type not supported",
    };
    const bool isKnown = status >= 0 && status < static_cast<Status>(sizeof(texts) / sizeof(*texts));
    return isKnown ? texts[status] : "Unknown Error";
}

} // namespace

extern "C" {

Status nvmlInit_v2()
{
    const std::lock_guard lock(sessionMutex);
    if (!driver) {
        driver = LoadDriver();
    }
    const Status status = driver ? Forward("nvmlInit_v2") : driverNotLoaded;
    sessions += status == success ? 1 : 0;
    ReleaseUnused();
    return status;
}

Status nvmlShutdown()
{
    const std::lock_guard lock(sessionMutex);
    const Status status = Forward("nvmlShutdown");
    sessions -= status == success ? 1 : 0;
    ReleaseUnused();
    return status;
}

const char* nvmlErrorString(Status status)
{
    const auto call = FindIn<const char* (*)(Status)>(driver, "nvmlErrorString");
    return call ? call(status) : OwnErrorString(status);
}

Status nvmlDeviceGetCount_v2(unsigned int* count)
{
    return Forward("nvmlDeviceGetCount_v2", count);
}

Status nvmlDeviceGetHandleByIndex_v2(unsigned int index, Device* device)
{
    return Forward("nvmlDeviceGetHandleByIndex_v2", index, device);
}

Status nvmlDeviceGetSerial(Device device, char* serial, unsigned int length)
{
    return Forward("nvmlDeviceGetSerial", device, serial, length);
}

Status nvmlDeviceGetCudaComputeCapability(Device device, int* major, int* minor)
{
    return Forward("nvmlDeviceGetCudaComputeCapability", device, major, minor);
}

Status nvmlDeviceGetTemperatureThreshold(Device device, int threshold, unsigned int* celsius)
{
    return Forward("nvmlDeviceGetTemperatureThreshold", device, threshold, celsius);
}

Status nvmlDeviceGetCurrPcieLinkGeneration(Device device, unsigned int* generation)
{
    return Forward("nvmlDeviceGetCurrPcieLinkGeneration", device, generation);
}

Status nvmlDeviceGetMaxPcieLinkGeneration(Device device, unsigned int* generation)
{
    return Forward("nvmlDeviceGetMaxPcieLinkGeneration", device, generation);
}

Status nvmlDeviceGetMaxPcieLinkWidth(Device device, unsigned int* lanes)
{
    return Forward("nvmlDeviceGetMaxPcieLinkWidth", device, lanes);
}

Status nvmlDeviceGetClockInfo(Device device, int clockType, unsigned int* megahertz)
{
    return Forward("nvmlDeviceGetClockInfo", device, clockType, megahertz);
}

Status nvmlDeviceGetMemoryBusWidth(Device device, unsigned int* bits)
{
    return Forward("nvmlDeviceGetMemoryBusWidth", device, bits);
}

} // extern "C"
