// nvml.dll for computers without an NVIDIA driver.
//
// orvel-graphic-cards-enumeration.dll imports nvml.dll when it is loaded, so a host that must start on every computer ships
// this one beside its program. Where the system folder has the driver's own, every call goes there; elsewhere NVML says that
// no driver is loaded. The driver's is looked for at the first call: a DLL must not load another one while it is being
// loaded.

#include <string>

#include <windows.h>

namespace {

using Device = void*;
using Status = int;

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
    // With its whole path: the bare name would find this DLL.
    const HMODULE found = ::LoadLibraryW((std::wstring(folder) + L"\\nvml.dll").c_str());
    return found == OwnModule() ? nullptr : found;
}

/// The driver's nvml.dll; null on a computer that has none.
HMODULE Driver()
{
    static const HMODULE driver = LoadDriver();
    return driver;
}

/// Passes a call on to the driver; `withoutDriver` where there is none.
template <typename... Arguments>
Status Forward(const char* function, Status withoutDriver, Arguments... arguments)
{
    if (!Driver()) {
        return withoutDriver;
    }
    using Function = Status (*)(Arguments...);
    const auto call = reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(Driver(), function)));
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
        "vGPU ECC Not Supported",
        "Insufficient Resources",
    };
    const bool isKnown = status >= 0 && status < static_cast<Status>(sizeof(texts) / sizeof(*texts));
    return isKnown ? texts[status] : "Unknown Error";
}

} // namespace

extern "C" {

Status nvmlInit_v2()
{
    return Forward("nvmlInit_v2", driverNotLoaded);
}

Status nvmlShutdown()
{
    return Forward("nvmlShutdown", uninitialized);
}

const char* nvmlErrorString(Status status)
{
    using Function = const char* (*)(Status);
    const HMODULE driver = Driver();
    const auto call =
        driver ? reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(driver, "nvmlErrorString"))) : nullptr;
    return call ? call(status) : OwnErrorString(status);
}

Status nvmlDeviceGetCount_v2(unsigned int* count)
{
    return Forward("nvmlDeviceGetCount_v2", uninitialized, count);
}

Status nvmlDeviceGetHandleByIndex_v2(unsigned int index, Device* device)
{
    return Forward("nvmlDeviceGetHandleByIndex_v2", uninitialized, index, device);
}

Status nvmlDeviceGetSerial(Device device, char* serial, unsigned int length)
{
    return Forward("nvmlDeviceGetSerial", uninitialized, device, serial, length);
}

Status nvmlDeviceGetCudaComputeCapability(Device device, int* major, int* minor)
{
    return Forward("nvmlDeviceGetCudaComputeCapability", uninitialized, device, major, minor);
}

Status nvmlDeviceGetTemperatureThreshold(Device device, int threshold, unsigned int* celsius)
{
    return Forward("nvmlDeviceGetTemperatureThreshold", uninitialized, device, threshold, celsius);
}

Status nvmlDeviceGetCurrPcieLinkGeneration(Device device, unsigned int* generation)
{
    return Forward("nvmlDeviceGetCurrPcieLinkGeneration", uninitialized, device, generation);
}

Status nvmlDeviceGetMaxPcieLinkGeneration(Device device, unsigned int* generation)
{
    return Forward("nvmlDeviceGetMaxPcieLinkGeneration", uninitialized, device, generation);
}

Status nvmlDeviceGetMaxPcieLinkWidth(Device device, unsigned int* lanes)
{
    return Forward("nvmlDeviceGetMaxPcieLinkWidth", uninitialized, device, lanes);
}

Status nvmlDeviceGetClockInfo(Device device, int clockType, unsigned int* megahertz)
{
    return Forward("nvmlDeviceGetClockInfo", uninitialized, device, clockType, megahertz);
}

Status nvmlDeviceGetMemoryBusWidth(Device device, unsigned int* bits)
{
    return Forward("nvmlDeviceGetMemoryBusWidth", uninitialized, device, bits);
}

} // extern "C"
