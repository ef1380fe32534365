#include "sources/Adlx.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <string>
#include <string_view>

#include "interfaces/AdlxInterfaces.h"

namespace orvel::shared::inventory {

namespace {

using enumeration::ADLX_DECLARED_VERSION;
using enumeration::ADLX_RESULT;
using enumeration::AdlxPtr;
using P = Property;

/// No computer has more; a larger list is not one.
constexpr uint32_t mostGpus = 256;

constexpr int32_t integratedType = 1, discreteType = 2;

void __stdcall FreeForAdl(void** buffer)
{
    std::free(*buffer);
    *buffer = nullptr;
}

template <typename Function>
Function Find(const FunctionLookup& find, const char* name)
{
    return reinterpret_cast<Function>(find(name));
}

/// What a session of ADLX gives.
struct Roots {
    enumeration::IADLXSystem* system = nullptr;
    enumeration::IADLMapping* mapping = nullptr; ///< null where ADLX does not know the GPUs' places
};

Answer AnswerOf(ADLX_RESULT result, const Answer& value)
{
    return DriverAnswer(enumeration::Succeeded(result) ? enumeration::ADLX_OK : result, enumeration::ADLX_NOT_SUPPORTED,
                        value);
}

/// A text of an ADLX object, which lives as long as the object.
template <typename Call>
Answer ReadText(Call call)
{
    constexpr std::size_t longest = 256;
    const char* text = nullptr;
    const ADLX_RESULT result = call(&text);
    const bool isThere = enumeration::Succeeded(result) && text;
    return AnswerOf(result, isThere ? DriverText(text, longest) : Unavailable(Reason::Missing));
}

/// A number of hexadecimal digits.
template <typename Call>
std::optional<uint32_t> ReadHexadecimal(Call call)
{
    const auto text = TextOf(ReadText(call));
    uint32_t number = 0;
    const auto* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, number, 16);
    return !text.empty() && parsed.ec == std::errc() && parsed.ptr == end ? std::optional(number) : std::nullopt;
}

Answer IntegratedOf(enumeration::IADLXGPU& gpu)
{
    int32_t type = 0;
    const ADLX_RESULT result = gpu.Type(&type);
    if (type == integratedType || type == discreteType) {
        return AnswerOf(result, Known(type == integratedType));
    }
    return AnswerOf(result, Unavailable(type == 0 ? Reason::Missing : Reason::Unusable));
}

Answer BoardMemoryOf(enumeration::IADLXGPU& gpu)
{
    constexpr uint64_t bytesPerMebibyte = 1 << 20;
    uint32_t mebibytes = 0;
    const ADLX_RESULT result = gpu.TotalVRAM(&mebibytes);
    return AnswerOf(result, Known(mebibytes * bytesPerMebibyte));
}

std::optional<uint64_t> LuidOf(enumeration::IADLXGPU& gpu)
{
    AdlxPtr<enumeration::IADLXGPU2> second;
    const bool isThere = second.Receive([&](enumeration::IADLXGPU2** received) {
        return gpu.QueryInterface(L"IADLXGPU2", reinterpret_cast<void**>(received));
    });
    enumeration::ADLX_LUID luid{};
    if (!isThere || !enumeration::Succeeded(second->LUID(&luid)) || (luid.lowPart == 0 && luid.highPart == 0)) {
        return {};
    }
    return uint64_t{static_cast<uint32_t>(luid.highPart)} << 32 | luid.lowPart;
}

PciAddress AddressOf(enumeration::IADLMapping* mapping, enumeration::IADLXGPU& gpu)
{
    int32_t bus = -1, device = -1, function = -1;
    if (!mapping || !enumeration::Succeeded(mapping->BdfFromADLXGPU(&gpu, &bus, &device, &function))) {
        return {};
    }
    const auto part = [](int32_t number) {
        return number < 0 ? std::nullopt : std::optional(static_cast<uint64_t>(number));
    };
    return {{}, part(bus), part(device), part(function)};
}

void AddIdentifiers(enumeration::IADLXGPU& gpu, DriverDevice& device)
{
    device.vendorId = ReadHexadecimal([&](const char** text) { return gpu.VendorId(text); });
    device.deviceId = ReadHexadecimal([&](const char** text) { return gpu.DeviceId(text); });
    device.revision = ReadHexadecimal([&](const char** text) { return gpu.RevisionId(text); });
    const auto subsystem = ReadHexadecimal([&](const char** text) { return gpu.SubSystemId(text); });
    const auto subsystemVendor = ReadHexadecimal([&](const char** text) { return gpu.SubSystemVendorId(text); });
    if (subsystem && subsystemVendor) {
        device.subsystemId = KnownIdentifier(*subsystem << 16 | (*subsystemVendor & 0xFFFF));
    }
}

DriverDevice DeviceOf(const Roots& roots, enumeration::IADLXGPU& gpu)
{
    DriverDevice device;
    device.luid = LuidOf(gpu);
    device.address = AddressOf(roots.mapping, gpu);
    AddIdentifiers(gpu, device);
    device.answers = {
        {P::Integrated, IntegratedOf(gpu)},
        {P::BoardMemoryBytes, BoardMemoryOf(gpu)},
        {P::MemoryType, ReadText([&](const char** text) { return gpu.VRAMType(text); })},
    };
    return device;
}

/// One GPU that ADLX does not return does not keep the others from it.
DriverReading ReadGpus(const Roots& roots)
{
    DriverReading reading;
    AdlxPtr<enumeration::IADLXGPUList> list;
    ADLX_RESULT result = enumeration::ADLX_OK;
    if (!list.Receive([&](enumeration::IADLXGPUList** received) { return result = roots.system->GetGPUs(received); })) {
        reading.end = Failed(result);
        return reading;
    }
    const uint32_t count = list->Size();
    if (count > mostGpus) {
        reading.end = Unavailable(Reason::Unusable);
        return reading;
    }
    for (uint32_t index = 0; index < count; ++index) {
        AdlxPtr<enumeration::IADLXGPU> gpu;
        if (gpu.Receive([&](enumeration::IADLXGPU** received) { return result = list->At_GPUList(index, received); })) {
            reading.devices.push_back(DeviceOf(roots, *gpu));
        } else {
            reading.end = Failed(result);
        }
    }
    return reading;
}

/// The version of a caller, which a driver must not be older than.
uint64_t CallersVersion(const FunctionLookup& find)
{
    using QueryFullVersion = ADLX_RESULT (*)(uint64_t*);
    const auto query = Find<QueryFullVersion>(find, "ADLXQueryFullVersion");
    uint64_t drivers = 0;
    const bool isKnown = query && enumeration::Succeeded(query(&drivers)) && drivers != 0;
    return isKnown ? std::min(drivers, ADLX_DECLARED_VERSION) : ADLX_DECLARED_VERSION;
}

/// The result of the initialisation; empty where the driver has no function for it.
std::optional<ADLX_RESULT> Initialize(const FunctionLookup& find, void* adlContext, Roots& roots)
{
    using AdlFree = void(__stdcall*)(void**);
    using WithCallerAdl = ADLX_RESULT (*)(uint64_t, enumeration::IADLXSystem**, enumeration::IADLMapping**, void*, AdlFree);
    using Alone = ADLX_RESULT (*)(uint64_t, enumeration::IADLXSystem**);
    std::optional<ADLX_RESULT> result;
    if (const auto initialize = Find<WithCallerAdl>(find, "ADLXInitializeWithCallerAdl"); initialize && adlContext) {
        result = initialize(CallersVersion(find), &roots.system, &roots.mapping, adlContext, &FreeForAdl);
        if (enumeration::Succeeded(*result)) {
            return result;
        }
    }
    roots = {};
    if (const auto initialize = Find<Alone>(find, "ADLXInitialize")) {
        result = initialize(CallersVersion(find), &roots.system);
    }
    return result;
}

/// ADLX's state from its initialisation on.
class Session {
public:
    using Terminate = ADLX_RESULT (*)();

    Session(Terminate terminate, bool& isStopped) : terminate(terminate), isStopped(isStopped) { this->isStopped = false; }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session() { isStopped = enumeration::Succeeded(terminate()); }

private:
    Terminate terminate;
    bool& isStopped;
};

} // namespace

void* __stdcall AllocateForAdl(int bytes)
{
    return bytes > 0 ? std::malloc(static_cast<std::size_t>(bytes)) : nullptr;
}

DriverReading ReadAdlx(const FunctionLookup& find, void* adlContext, bool& isStopped)
{
    isStopped = true;
    const auto terminate = Find<Session::Terminate>(find, "ADLXTerminate");
    if (!terminate) {
        return {Unavailable(Reason::NotPresent), {}};
    }
    Roots roots;
    const auto result = Initialize(find, adlContext, roots);
    if (!result) {
        return {Unavailable(Reason::NotPresent), {}};
    }
    if (!enumeration::Succeeded(*result) || *result == enumeration::ADLX_ALREADY_INITIALIZED) {
        return {Failed(*result), {}};
    }
    const Session session(terminate, isStopped);
    return roots.system ? ReadGpus(roots) : DriverReading{Unavailable(Reason::Unusable), {}};
}

} // namespace orvel::shared::inventory
