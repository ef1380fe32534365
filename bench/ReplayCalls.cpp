// How each call is repeated. A function of NVML, NVAPI, ADL, ADLX or the desktop window manager needs no entry here, unless
// it takes something else than its handle, the numbers in the recording, and areas that it writes to.

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>
#include <stdexcept>

#include <CL/cl.h>

#include "ReplayCall.h"
#include "platform/Dxgi.h"
#include "platform/Handles.h"
#include "platform/Wmi.h"

namespace orvel::bench {

namespace {

using namespace shared::enumeration;
using Microsoft::WRL::ComPtr;

Word AsWord(const void* pointer)
{
    return reinterpret_cast<Word>(pointer);
}

/// The object that the call is on.
template <typename Object>
Object* On(const Call& call, const Session& session)
{
    return reinterpret_cast<Object*>(call.On ? session.Outputs[*call.On] : 0);
}

/// Remembers what a call wrote for the handles and objects that it returned in the recording.
void Keep(const Call& call, const void* written, Session& session)
{
    for (size_t index = 0; index < call.Returns.size(); ++index) {
        std::memcpy(&session.Outputs[call.Returns[index]], static_cast<const std::byte*>(written) + index * sizeof(Word),
                    sizeof(Word));
    }
}

/// A buffer of the caller with this size. Throws std::runtime_error if there is none.
std::byte* Buffer(size_t bytes, Session& session)
{
    if (bytes > Session::areaBytes) {
        throw std::runtime_error("a recorded call has a buffer of " + std::to_string(bytes) + " bytes, which is too large");
    }
    return session.Areas[0];
}

// --- the loader and the registry ---

HKEY KeyOf(const Call& call, const Session& session)
{
    return call.On ? On<HKEY__>(call, session) : HKEY_LOCAL_MACHINE;
}

template <typename Character>
const Character* TextOf(const Call& call)
{
    if constexpr (sizeof(Character) == 1) {
        return call.Text.c_str();
    } else {
        return call.WideText.c_str();
    }
}

template <typename Character>
using OpenFunction = LSTATUS WINAPI(HKEY, const Character*, DWORD, REGSAM, PHKEY);

template <typename Character, OpenFunction<Character> Open>
void OpenKey(const Call& call, Session& session)
{
    HKEY key = nullptr;
    Open(KeyOf(call, session), TextOf<Character>(call), 0, static_cast<REGSAM>(call.Number), &key);
    Keep(call, &key, session);
}

template <typename Character>
using EnumerateFunction = LSTATUS WINAPI(HKEY, DWORD, Character*, LPDWORD, LPDWORD, Character*, LPDWORD, PFILETIME);

template <typename Character, EnumerateFunction<Character> Enumerate>
void EnumerateKey(const Call& call, Session& session)
{
    Character name[256];
    DWORD length = 256;
    Enumerate(KeyOf(call, session), static_cast<DWORD>(call.Numbers[0]), name, &length, nullptr, nullptr, nullptr, nullptr);
}

template <typename Character>
using QueryFunction = LSTATUS WINAPI(HKEY, const Character*, LPDWORD, LPDWORD, LPBYTE, LPDWORD);

template <typename Character, QueryFunction<Character> Query>
void QueryValue(const Call& call, Session& session)
{
    auto bytes = static_cast<DWORD>(call.Number);
    auto* const data = reinterpret_cast<BYTE*>(Buffer(bytes, session));
    Query(KeyOf(call, session), TextOf<Character>(call), nullptr, nullptr, bytes == 0 ? nullptr : data, &bytes);
}

// --- WMI and DXGI ---

template <typename Object>
void Hold(const Call& call, const ComPtr<Object>& object, Session& session)
{
    const Object* const pointer = object.Get();
    Keep(call, &pointer, session);
    session.Held.push_back(object);
}

void SendQuery(const Call& call, Session& session)
{
    ComPtr<IEnumWbemClassObject> rows;
    shared::enumeration::SendQuery(*session.Services.Get(), call.WideText.c_str(), rows);
    Hold(call, rows, session);
}

void FetchRow(const Call& call, Session& session)
{
    ComPtr<IWbemClassObject> row;
    shared::enumeration::FetchRow(*On<IEnumWbemClassObject>(call, session), row);
    Hold(call, row, session);
}

void ReadProperty(const Call& call, Session& session)
{
    VARIANT value{};
    const ClearedVariant cleared(&value);
    On<IWbemClassObject>(call, session)->Get(call.WideText.c_str(), 0, &value, nullptr, nullptr);
}

void CreateFactory(const Call& call, Session& session)
{
    const auto create = reinterpret_cast<decltype(&::CreateDXGIFactory)>(reinterpret_cast<void*>(*call.Function));
    create(idxgiFactoryId, reinterpret_cast<void**>(session.Factory.ReleaseAndGetAddressOf()));
}

void DescribeAdapter(const Call&, Session& session)
{
    DXGI_ADAPTER_DESC description;
    session.Adapter->GetDesc(&description);
}

// --- the drivers ---

/// The arguments of a driver's function. A function with fewer parameters ignores the rest, as the caller clears them all.
struct Arguments {
    Word Words[8] = {};
    size_t Count = 0;

    void Add(Word word) { Words[Count++] = word; }
};

Word CallFunction(FARPROC function, const Arguments& arguments)
{
    using AnyFunction = Word (*)(Word, Word, Word, Word, Word, Word, Word, Word);
    const auto& w = arguments.Words;
    return reinterpret_cast<AnyFunction>(reinterpret_cast<void*>(function))(w[0], w[1], w[2], w[3], w[4], w[5], w[6], w[7]);
}

/// Its handle, the numbers in the text, the area that it writes to and that area's size, and further areas.
void CallDriver(const Call& call, Session& session)
{
    constexpr size_t reservedBytes = 64; // at most; the caller zeroes them
    Arguments arguments;
    if (call.On) {
        arguments.Add(session.Outputs[*call.On]);
    }
    for (const Word number : call.Numbers) {
        arguments.Add(number);
    }
    for (auto& area : session.Areas) {
        std::memset(area, 0, reservedBytes);
        if (arguments.Count < std::size(arguments.Words)) {
            arguments.Add(AsWord(area));
        }
        if (&area == session.Areas && call.Number != 0) {
            arguments.Add(call.Number);
        }
    }
    std::memcpy(Buffer(std::max<size_t>(call.Number, call.Input.size()), session), call.Input.data(), call.Input.size());
    CallFunction(*call.Function, arguments);
    Keep(call, session.Areas[0], session);
}

/// The three functions end with the size of the caller's list or buffer, itself, and where to write the size needed.
void CallOpenCl(const Call& call, Session& session, Arguments arguments)
{
    arguments.Add(call.Number);
    arguments.Add(call.Number == 0 ? 0 : AsWord(Buffer(call.Number * sizeof(Word), session)));
    arguments.Add(call.Number == 0 ? AsWord(session.Areas[1]) : 0);
    CallFunction(*call.Function, arguments);
    Keep(call, session.Areas[0], session);
}

void* __stdcall Allocate(int bytes)
{
    return std::malloc(static_cast<size_t>(bytes));
}

void __stdcall Free(void** buffer)
{
    std::free(*buffer);
    *buffer = nullptr;
}

void CreateAdl(const Call& call, Session& session)
{
    CallFunction(*call.Function, {{AsWord(reinterpret_cast<void*>(&Allocate)), 1, AsWord(session.Areas[0]), 1}});
    Keep(call, session.Areas[0], session);
}

void InitializeAdlx(const Call& call, Session& session)
{
    CallFunction(*call.Function,
                 {{call.Number, AsWord(&std::get<IADLXSystem*>(session.Adlx)), AsWord(&std::get<IADLMapping*>(session.Adlx)),
                   session.Outputs[*call.On], AsWord(reinterpret_cast<void*>(&Free))}});
}

/// An argument of a method of ADLX: an object, where to write one, the number in the text, or where to write a value.
template <typename Argument>
Argument AdlxArgument(const Call& call, Session& session)
{
    using Target = std::remove_pointer_t<Argument>;
    if constexpr (std::is_integral_v<Argument>) {
        return static_cast<Argument>(call.Numbers[0]);
    } else if constexpr (std::is_base_of_v<IADLXInterface, Target>) {
        return std::get<Argument>(session.Adlx);
    } else if constexpr (std::is_base_of_v<IADLXInterface, std::remove_pointer_t<Target>>) {
        return &std::get<Target>(session.Adlx);
    } else {
        return reinterpret_cast<Argument>(session.Areas[0]);
    }
}

template <typename Object, typename Result, typename... Types>
void CallMethod(Result (__stdcall Object::*method)(Types...), const Call& call, Session& session)
{
    (std::get<Object*>(session.Adlx)->*method)(AdlxArgument<Types>(call, session)...);
}

template <auto Method>
void CallAdlx(const Call& call, Session& session)
{
    CallMethod(Method, call, session);
}

template <typename Object>
void ReleaseAdlx(const Call&, Session& session)
{
    std::get<Object*>(session.Adlx)->Release();
}

/// By the call's name, or by its whole text.
const std::map<std::string, Action> actions = {
    {"loader LoadLibraryW", [](const Call& call, Session&) { *call.Module = ::LoadLibraryW(call.WideText.c_str()); }},
    {"loader LoadLibraryExW",
     [](const Call& call, Session&) {
         *call.Module = ::LoadLibraryExW(call.WideText.c_str(), nullptr, static_cast<DWORD>(call.Number));
     }},
    {"loader GetModuleHandleExW",
     [](const Call& call, Session&) { ::GetModuleHandleExW(0, call.WideText.c_str(), call.Module); }},
    {"loader FreeLibrary", [](const Call& call, Session&) { ::FreeLibrary(*call.Module); }},
    {"loader GetProcAddress",
     [](const Call& call, Session&) {
         *call.LookedUp = ::GetProcAddress(*call.Module, call.Text.c_str() + call.Text.find(' ') + 1);
     }},
    {"registry RegOpenKeyExA", &OpenKey<char, ::RegOpenKeyExA>},
    {"registry RegOpenKeyExW", &OpenKey<wchar_t, ::RegOpenKeyExW>},
    {"registry RegEnumKeyExA", &EnumerateKey<char, ::RegEnumKeyExA>},
    {"registry RegEnumKeyExW", &EnumerateKey<wchar_t, ::RegEnumKeyExW>},
    {"registry RegQueryValueExA", &QueryValue<char, ::RegQueryValueExA>},
    {"registry RegQueryValueExW", &QueryValue<wchar_t, ::RegQueryValueExW>},
    {"registry RegCloseKey", [](const Call& call, Session& session) { ::RegCloseKey(KeyOf(call, session)); }},
    {"wmi connect", [](const Call& call, Session& session) { ConnectToWmi(call.WideText.c_str(), session.Services); }},
    {"wmi query", &SendQuery},
    {"wmi next", &FetchRow},
    {"wmi get", &ReadProperty},
    {"wmi disconnect", [](const Call&, Session& session) { session.Services.Reset(); }},
    {"dxgi CreateDXGIFactory", &CreateFactory},
    {"dxgi EnumAdapters",
     [](const Call& call, Session& session) {
         session.Factory->EnumAdapters(static_cast<UINT>(call.Numbers[0]), session.Adapter.ReleaseAndGetAddressOf());
     }},
    {"dxgi GetDesc", &DescribeAdapter},
    {"opencl clGetPlatformIDs", [](const Call& call, Session& session) { CallOpenCl(call, session, {}); }},
    {"opencl clGetDeviceIDs",
     [](const Call& call, Session& session) { // a recording lacks the type: an enumeration lists only GPUs
         CallOpenCl(call, session, {{session.Outputs[*call.On], CL_DEVICE_TYPE_GPU}, 2});
     }},
    {"opencl clGetDeviceInfo",
     [](const Call& call, Session& session) {
         CallOpenCl(call, session, {{session.Outputs[*call.On], call.Numbers[0]}, 2});
     }},
    {"nvapi nvapi_QueryInterface",
     [](const Call& call, Session&) {
         *call.LookedUp = reinterpret_cast<FARPROC>(CallFunction(*call.Function, {{call.Number}, 1}));
     }},
    {"adl ADL2_Main_Control_Create", &CreateAdl},
    {"adlx ADLXInitializeWithCallerAdl", &InitializeAdlx},
    {"adlx GetGPUs", &CallAdlx<&IADLXSystem::GetGPUs>},
    {"adlx GetPerformanceMonitoringServices", &CallAdlx<&IADLXSystem::GetPerformanceMonitoringServices>},
    {"adlx AdlAdapterIndexFromADLXGPU", &CallAdlx<&IADLMapping::AdlAdapterIndexFromADLXGPU>},
    {"adlx Size", &CallAdlx<&IADLXGPUList::Size>},
    {"adlx At_GPUList", &CallAdlx<&IADLXGPUList::At_GPUList>},
    {"adlx VendorId", &CallAdlx<&IADLXGPU::VendorId>},
    {"adlx Name", &CallAdlx<&IADLXGPU::Name>},
    {"adlx PNPString", &CallAdlx<&IADLXGPU::PNPString>},
    {"adlx DeviceId", &CallAdlx<&IADLXGPU::DeviceId>},
    {"adlx TotalVRAM", &CallAdlx<&IADLXGPU::TotalVRAM>},
    {"adlx GetSupportedGPUMetrics", &CallAdlx<&IADLXPerformanceMonitoringServices::GetSupportedGPUMetrics>},
    {"adlx GetCurrentGPUMetrics", &CallAdlx<&IADLXPerformanceMonitoringServices::GetCurrentGPUMetrics>},
    {"adlx IsSupportedGPUClockSpeed", &CallAdlx<&IADLXGPUMetricsSupport::IsSupportedGPUClockSpeed>},
    {"adlx GPUClockSpeed", &CallAdlx<&IADLXGPUMetrics::GPUClockSpeed>},
    {"adlx Release IADLXGPUList", &ReleaseAdlx<IADLXGPUList>},
    {"adlx Release IADLXGPU", &ReleaseAdlx<IADLXGPU>},
    {"adlx Release IADLXPerformanceMonitoringServices", &ReleaseAdlx<IADLXPerformanceMonitoringServices>},
    {"adlx Release IADLXGPUMetricsSupport", &ReleaseAdlx<IADLXGPUMetricsSupport>},
    {"adlx Release IADLXGPUMetrics", &ReleaseAdlx<IADLXGPUMetrics>},
};

} // namespace

Action FindAction(const std::string& name, const std::string& text, bool isFunction)
{
    for (const std::string& key : {text, name}) {
        if (const auto action = actions.find(key); action != actions.end()) {
            return action->second;
        }
    }
    return isFunction ? &CallDriver : nullptr;
}

} // namespace orvel::bench
