#include "FakePlatform.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include <windows.h>

#include <dxgi.h>
#include <setupapi.h>

#include "FakeDrivers.h"
#include "FakeState.h"

namespace orvel::shared::inventory {

FakeState* state = nullptr;

bool GoesWrong(Source source)
{
    const int number = state->calls[static_cast<std::size_t>(source)]++;
    const auto& fault = state->fault;
    if (fault.kind == Fault::None || fault.source != source || fault.number != number) {
        return false;
    }
    if (fault.kind == Fault::Hangs) {
        ::WaitForSingleObject(state->goOn, INFINITE);
    }
    return true;
}

namespace {

constexpr HRESULT refusedByDxgi = static_cast<HRESULT>(0x887A0001);

// --- SetupAPI ---

struct NumberedProperty {
    DWORD format; ///< the first part of the format id
    DWORD number;
    DeviceProperty property;
};

using D = DeviceProperty;
constexpr NumberedProperty properties[] = {
    {0xa45c254e, 3, D::HardwareIds},
    {0xa45c254e, 2, D::DeviceDesc},
    {0xa45c254e, 6, D::Service},
    {0xa45c254e, 23, D::BusNumber},
    {0xa45c254e, 30, D::Address},
    {0xa45c254e, 32, D::PowerData},
    {0x4340a6c5, 2, D::DevNodeStatus},
    {0x4340a6c5, 3, D::ProblemCode},
    {0xa8b865dd, 2, D::DriverDate},
    {0xa8b865dd, 3, D::DriverVersion},
    {0xa8b865dd, 5, D::DriverInfPath},
    {0xa8b865dd, 9, D::DriverProvider},
    {0x83da6326, 6, D::SessionId},
    {0x3ab22e31, 9, D::CurrentLinkSpeed},
    {0x3ab22e31, 10, D::CurrentLinkWidth},
    {0x3ab22e31, 11, D::MaxLinkSpeed},
    {0x3ab22e31, 12, D::MaxLinkWidth},
    {0xc50a3f10, 1, D::IndirectDisplay},
    {0x60b193cb, 2, D::Luid},
    {0x60b193cb, 3, D::PhysicalAdapterIndex},
};

const DeviceReading& DeviceOf(const SP_DEVINFO_DATA* data)
{
    return state->devices.at(data->DevInst - 1);
}

template <typename Result>
Result Refuse(Result result)
{
    ::SetLastError(ERROR_ACCESS_DENIED);
    return result;
}

HDEVINFO WINAPI GetClassDevs(const GUID*, PCWSTR, HWND, DWORD)
{
    return GoesWrong(Source::SetupApi) ? Refuse(INVALID_HANDLE_VALUE) : &state->devices;
}

BOOL WINAPI EnumDeviceInfo(HDEVINFO, DWORD index, PSP_DEVINFO_DATA data)
{
    if (GoesWrong(Source::SetupApi)) {
        return Refuse(FALSE);
    }
    if (index >= state->devices.size()) {
        ::SetLastError(ERROR_NO_MORE_ITEMS);
        return FALSE;
    }
    data->DevInst = index + 1;
    return data->cbSize == sizeof *data;
}

BOOL WINAPI GetDeviceInstanceId(HDEVINFO, PSP_DEVINFO_DATA data, PWSTR text, DWORD size, PDWORD)
{
    if (GoesWrong(Source::SetupApi)) {
        return Refuse(FALSE);
    }
    const auto& bytes = DeviceOf(data).instanceId.bytes;
    std::memcpy(text, bytes.data(), std::min<size_t>(bytes.size(), size * sizeof *text));
    return TRUE;
}

BOOL WINAPI GetDeviceProperty(HDEVINFO, PSP_DEVINFO_DATA data, const DEVPROPKEY* key, DEVPROPTYPE* type, PBYTE buffer,
                              DWORD size, PDWORD needed, DWORD)
{
    const auto* known = std::find_if(std::begin(properties), std::end(properties), [&](const NumberedProperty& each) {
        return each.format == key->fmtid.Data1 && each.number == key->pid;
    });
    if (GoesWrong(Source::SetupApi)) {
        state->isMatchRefused =
            known != std::end(properties) &&
            (known->property == D::Luid || known->property == D::BusNumber || known->property == D::Address);
        return Refuse(FALSE);
    }
    const RawValue value = known == std::end(properties) ? Refused(ERROR_NOT_FOUND) : DeviceOf(data).Of(known->property);
    *needed = static_cast<DWORD>(value.bytes.size());
    if (value.error != 0 || value.bytes.size() > size) {
        ::SetLastError(value.error != 0 ? value.error : ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    *type = value.type;
    std::copy(value.bytes.begin(), value.bytes.end(), buffer);
    return TRUE;
}

BOOL WINAPI DestroyDeviceInfoList(HDEVINFO)
{
    return TRUE;
}

// --- driver key ---

HKEY WINAPI OpenDevRegKey(HDEVINFO, PSP_DEVINFO_DATA data, DWORD, DWORD, DWORD, REGSAM)
{
    if (GoesWrong(Source::DriverKey)) {
        return Refuse(static_cast<HKEY>(INVALID_HANDLE_VALUE));
    }
    return reinterpret_cast<HKEY>(&state->keys.at(data->DevInst - 1));
}

LSTATUS WINAPI QueryValue(HKEY key, LPCWSTR name, LPDWORD, LPDWORD type, LPBYTE buffer, LPDWORD size)
{
    if (GoesWrong(Source::DriverKey)) {
        return ERROR_ACCESS_DENIED;
    }
    using K = DriverKeyValue;
    const std::map<std::wstring, K> names = {
        {L"DriverDesc", K::DriverDesc},
        {L"HardwareInformation.BiosString", K::BiosString},
        {L"HardwareInformation.qwMemorySize", K::QwMemorySize},
    };
    const auto found = names.find(name);
    if (found == names.end()) {
        return ERROR_FILE_NOT_FOUND;
    }
    const auto& value = reinterpret_cast<const DriverKeyReading*>(key)->Of(found->second);
    *type = value.type;
    const bool isEnough = value.bytes.size() <= *size;
    *size = static_cast<DWORD>(value.bytes.size());
    if (isEnough && value.error == 0) {
        std::copy(value.bytes.begin(), value.bytes.end(), buffer);
    }
    return value.error != 0 ? static_cast<LSTATUS>(value.error) : isEnough ? ERROR_SUCCESS : ERROR_MORE_DATA;
}

LSTATUS WINAPI CloseKey(HKEY)
{
    return ERROR_SUCCESS;
}

// --- display configuration ---

LONG WINAPI DisplayBufferSizes(UINT32, UINT32* paths, UINT32* modes)
{
    *paths = *modes = 2;
    return GoesWrong(Source::DisplayConfig) ? ERROR_ACCESS_DENIED : ERROR_SUCCESS;
}

LONG WINAPI DisplayConfig(UINT32, UINT32* pathCount, DISPLAYCONFIG_PATH_INFO* paths, UINT32* modeCount,
                          DISPLAYCONFIG_MODE_INFO* modes, DISPLAYCONFIG_TOPOLOGY_ID*)
{
    if (GoesWrong(Source::DisplayConfig)) {
        return ERROR_ACCESS_DENIED;
    }
    *pathCount = *modeCount = 2;
    for (UINT32 index = 0; index < 2; ++index) {
        paths[index] = {};
        paths[index].sourceInfo.adapterId.LowPart = 7 + index;
        paths[index].sourceInfo.id = index;
        paths[index].sourceInfo.modeInfoIdx = index;
        paths[index].targetInfo.refreshRate = {60, 1};
        modes[index] = {};
        modes[index].infoType = DISPLAYCONFIG_MODE_INFO_TYPE_SOURCE;
        modes[index].sourceMode.width = 1920 * (index + 1);
        modes[index].sourceMode.height = 1080;
    }
    return ERROR_SUCCESS;
}

LONG WINAPI DisplayDeviceInfo(DISPLAYCONFIG_DEVICE_INFO_HEADER* header)
{
    if (GoesWrong(Source::DisplayConfig)) {
        return ERROR_ACCESS_DENIED;
    }
    if (header->type == DISPLAYCONFIG_DEVICE_INFO_GET_SOURCE_NAME) {
        auto* name = reinterpret_cast<DISPLAYCONFIG_SOURCE_DEVICE_NAME*>(header)->viewGdiDeviceName;
        std::wcscpy(name, header->id == 0 ? L"\\\\.\\DISPLAY1" : L"\\\\.\\DISPLAY2");
    }
    return ERROR_SUCCESS;
}

// --- DXGI ---

/// Has no reference count, because it lives as long as the platform.
template <typename Interface>
class Immortal : public Interface {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE SetPrivateData(REFGUID, UINT, const void*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetPrivateDataInterface(REFGUID, const IUnknown*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetPrivateData(REFGUID, UINT*, void*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetParent(REFIID, void**) override { return E_NOTIMPL; }
};

class FakeAdapter final : public Immortal<IDXGIAdapter1> {
public:
    UINT Index = 0;

    HRESULT STDMETHODCALLTYPE EnumOutputs(UINT, IDXGIOutput**) override { return DXGI_ERROR_NOT_FOUND; }
    HRESULT STDMETHODCALLTYPE GetDesc(DXGI_ADAPTER_DESC*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CheckInterfaceSupport(REFGUID, LARGE_INTEGER*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetDesc1(DXGI_ADAPTER_DESC1* description) override
    {
        if (GoesWrong(Source::Dxgi)) {
            return refusedByDxgi;
        }
        const auto& adapter = state->adapters.at(Index);
        description->VendorId = adapter.vendorId;
        description->DeviceId = adapter.deviceId;
        description->SubSysId = adapter.subsystemId;
        description->Revision = adapter.revision;
        description->DedicatedVideoMemory = adapter.dedicatedVideoMemoryBytes;
        description->SharedSystemMemory = adapter.sharedSystemMemoryBytes;
        description->AdapterLuid.LowPart = static_cast<DWORD>(adapter.luid);
        return S_OK;
    }
};

class FakeFactory final : public Immortal<IDXGIFactory1> {
public:
    FakeAdapter Adapters[2];

    HRESULT STDMETHODCALLTYPE EnumAdapters(UINT, IDXGIAdapter**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MakeWindowAssociation(HWND, UINT) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetWindowAssociation(HWND*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CreateSwapChain(IUnknown*, DXGI_SWAP_CHAIN_DESC*, IDXGISwapChain**) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE CreateSoftwareAdapter(HMODULE, IDXGIAdapter**) override { return E_NOTIMPL; }
    WINBOOL STDMETHODCALLTYPE IsCurrent() override { return TRUE; }
    HRESULT STDMETHODCALLTYPE EnumAdapters1(UINT index, IDXGIAdapter1** adapter) override
    {
        if (GoesWrong(Source::Dxgi)) {
            return refusedByDxgi;
        }
        if (index >= 2) {
            return DXGI_ERROR_NOT_FOUND;
        }
        Adapters[index].Index = index;
        *adapter = &Adapters[index];
        return S_OK;
    }
};

FakeFactory factory;

HRESULT WINAPI CreateFactory1(REFIID, void** created)
{
    if (GoesWrong(Source::Dxgi)) {
        return refusedByDxgi;
    }
    *created = &factory;
    return S_OK;
}

// --- libraries ---

/// A DLL that is not really one.
struct FakeLibrary {
    std::wstring name;
    bool isDriver;
    std::map<std::string, void*> functions;
};

FakeLibrary libraries[] = {
    {L"dxgi.dll", false, {{"CreateDXGIFactory1", Pointer(&CreateFactory1)}}},
    {L"nvml.dll", true, NvmlExports()},
    {L"nvapi64.dll", true, NvapiExports()},
};

FakeLibrary* LibraryOf(HMODULE module)
{
    auto* const library = std::find_if(std::begin(libraries), std::end(libraries),
                                       [&](FakeLibrary& each) { return reinterpret_cast<HMODULE>(&each) == module; });
    return library == std::end(libraries) ? nullptr : library;
}

// The original functions that are replaced in every module.
decltype(&::GetProcAddress) realGetProcAddress = nullptr;
decltype(&::FreeLibrary) realFreeLibrary = nullptr;
decltype(&::CreateThread) realCreateThread = nullptr;

HMODULE WINAPI LoadLibraryFromSystem(LPCWSTR name, HANDLE, DWORD flags)
{
    auto* const library =
        std::find_if(std::begin(libraries), std::end(libraries), [&](const FakeLibrary& each) { return each.name == name; });
    const std::lock_guard lock(state->guard);
    state->loadedLibraries.emplace_back(name);
    if (library == std::end(libraries) || flags != LOAD_LIBRARY_SEARCH_SYSTEM32) {
        ::SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    state->openDrivers += library->isDriver ? 1 : 0;
    return reinterpret_cast<HMODULE>(library);
}

FARPROC WINAPI FindProcedure(HMODULE module, LPCSTR name)
{
    const auto* const library = LibraryOf(module);
    if (!library) {
        return realGetProcAddress(module, name);
    }
    const auto function = library->functions.find(name);
    return function == library->functions.end() ? nullptr : reinterpret_cast<FARPROC>(function->second);
}

BOOL WINAPI FreeFakeLibrary(HMODULE module)
{
    const auto* const library = LibraryOf(module);
    if (!library) {
        return realFreeLibrary(module);
    }
    state->openDrivers -= library->isDriver ? 1 : 0;
    return TRUE;
}

// --- threads ---

HANDLE WINAPI CreateWatchedThread(LPSECURITY_ATTRIBUTES security, SIZE_T stack, LPTHREAD_START_ROUTINE start,
                                  LPVOID parameter, DWORD flags, LPDWORD id)
{
    const auto thread = realCreateThread(security, stack, start, parameter, flags, id);
    HANDLE watched = nullptr;
    ::DuplicateHandle(::GetCurrentProcess(), thread, ::GetCurrentProcess(), &watched, 0, FALSE, DUPLICATE_SAME_ACCESS);
    const std::lock_guard lock(state->guard);
    state->threads.push_back(watched);
    return thread;
}

DriverKeyReading KeyOf(std::u16string_view bios, uint64_t memoryBytes)
{
    auto key = EmptyKey();
    At(key, DriverKeyValue::DriverDesc) = RegistryOf(u"NVIDIA GeForce RTX 3060");
    At(key, DriverKeyValue::BiosString) = RegistryOf(bios);
    At(key, DriverKeyValue::QwMemorySize) = RegistryBytes(REG_QWORD, BytesOf(memoryBytes, 8));
    return key;
}

} // namespace

FakePlatform::FakePlatform(const Fault& fault)
{
    state = new FakeState;
    state->fault = fault;
    state->goOn = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    state->devices = {GeForce(1, 7), GeForce(2, 8)};
    state->keys = {KeyOf(u"first", 12 * gibibyte), KeyOf(u"second", 24 * gibibyte)};
    state->adapters = {GeForceAdapter(7, 12 * gibibyte), GeForceAdapter(8, 24 * gibibyte)};

    const auto replace = [&](const wchar_t* dll, const char* name, auto* function) -> tests::ReplacedImport& {
        return replaced.emplace_back(tests::TestModule(), dll, name, reinterpret_cast<void*>(function));
    };
    replace(L"setupapi.dll", "SetupDiGetClassDevsW", &GetClassDevs);
    replace(L"setupapi.dll", "SetupDiEnumDeviceInfo", &EnumDeviceInfo);
    replace(L"setupapi.dll", "SetupDiGetDeviceInstanceIdW", &GetDeviceInstanceId);
    replace(L"setupapi.dll", "SetupDiGetDevicePropertyW", &GetDeviceProperty);
    replace(L"setupapi.dll", "SetupDiDestroyDeviceInfoList", &DestroyDeviceInfoList);
    replace(L"setupapi.dll", "SetupDiOpenDevRegKey", &OpenDevRegKey);
    replace(L"advapi32.dll", "RegQueryValueExW", &QueryValue);
    replace(L"advapi32.dll", "RegCloseKey", &CloseKey);
    replace(L"user32.dll", "GetDisplayConfigBufferSizes", &DisplayBufferSizes);
    replace(L"user32.dll", "QueryDisplayConfig", &DisplayConfig);
    replace(L"user32.dll", "DisplayConfigGetDeviceInfo", &DisplayDeviceInfo);
    replace(L"kernel32.dll", "LoadLibraryExW", &LoadLibraryFromSystem);
    realFreeLibrary = replace(L"kernel32.dll", "FreeLibrary", &FreeFakeLibrary).Original<decltype(&::FreeLibrary)>();
    realCreateThread = replace(L"kernel32.dll", "CreateThread", &CreateWatchedThread).Original<decltype(&::CreateThread)>();
    realGetProcAddress = replace(L"kernel32.dll", "GetProcAddress", &FindProcedure).Original<decltype(&::GetProcAddress)>();
}

FakePlatform::~FakePlatform()
{
    ::SetEvent(state->goOn);
    for (const auto thread : state->threads) {
        ::WaitForSingleObject(thread, 10'000);
        ::CloseHandle(thread);
    }
    replaced.clear();
    ::CloseHandle(state->goOn);
    delete state;
    state = nullptr;
}

int FakePlatform::Calls(Source source) const
{
    return state->calls[static_cast<std::size_t>(source)];
}

bool FakePlatform::IsMatchRefused() const
{
    return state->isMatchRefused;
}

void FakePlatform::LetSleep(std::size_t card)
{
    constexpr uint32_t sleeping = 4; // D3
    At(state->devices.at(card), DeviceProperty::PowerData) = PowerProperty(sleeping);
}

std::vector<std::wstring> FakePlatform::LoadedLibraries() const
{
    const std::lock_guard lock(state->guard);
    return state->loadedLibraries;
}

int FakePlatform::OpenDrivers() const
{
    return state->openDrivers;
}

std::size_t FakePlatform::RunningThreads() const
{
    const std::lock_guard lock(state->guard);
    return static_cast<std::size_t>(std::count_if(state->threads.begin(), state->threads.end(), [](HANDLE thread) {
        return ::WaitForSingleObject(thread, 0) == WAIT_TIMEOUT;
    }));
}

int64_t RefusalOf(Source source)
{
    switch (source) {
    case Source::Dxgi:
        return static_cast<uint32_t>(refusedByDxgi);
    case Source::Nvml:
        return lostGpu;
    case Source::Nvapi:
        return refusedByNvapi;
    default:
        return ERROR_ACCESS_DENIED;
    }
}

} // namespace orvel::shared::inventory
