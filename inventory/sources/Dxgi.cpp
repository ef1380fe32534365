#include "sources/Dxgi.h"

#include <algorithm>

#include <windows.h>

#include <dxgi.h>

#include "sources/Received.h"
#include "sources/SystemLibrary.h"

namespace orvel::shared::inventory {

namespace {

// Spelled out because the import libraries of the compilers do not all carry it.
constexpr GUID idxgiFactory1Id = {0x770aae78, 0xf26f, 0x4dba, {0xa8, 0x29, 0x25, 0x3c, 0x83, 0xd1, 0xb3, 0x87}};

/// A driver that never ends its list must not keep the thread for ever.
constexpr UINT mostAdapters = 1024;

std::u16string TextOf(const WCHAR (&text)[128])
{
    const auto* end = std::find(std::begin(text), std::end(text), L'\0');
    return {std::begin(text), end};
}

DxgiAdapter AdapterOf(const DXGI_ADAPTER_DESC1& description)
{
    DxgiAdapter adapter;
    adapter.description = TextOf(description.Description);
    adapter.vendorId = description.VendorId;
    adapter.deviceId = description.DeviceId;
    adapter.subsystemId = description.SubSysId;
    adapter.revision = description.Revision;
    adapter.dedicatedVideoMemoryBytes = description.DedicatedVideoMemory;
    adapter.dedicatedSystemMemoryBytes = description.DedicatedSystemMemory;
    adapter.sharedSystemMemoryBytes = description.SharedSystemMemory;
    adapter.luid = NumberOf(description.AdapterLuid);
    adapter.flags = description.Flags;
    return adapter;
}

/// One adapter that cannot be described does not keep the others from it.
DxgiReading ListAdapters(IDXGIFactory1& factory)
{
    DxgiReading reading;
    for (UINT index = 0; index < mostAdapters; ++index) {
        const auto adapter =
            Receive<IDXGIAdapter1>([&](IDXGIAdapter1** received) { return factory.EnumAdapters1(index, received); });
        if (adapter.result == DXGI_ERROR_NOT_FOUND) {
            return reading;
        }
        if (!adapter.object) {
            reading.end = Failed(CodeOf(adapter.result));
            return reading;
        }
        DXGI_ADAPTER_DESC1 description{};
        if (const HRESULT result = adapter.object->GetDesc1(&description); SUCCEEDED(result)) {
            reading.adapters.push_back(AdapterOf(description));
        } else {
            reading.end = Failed(CodeOf(result));
        }
    }
    return reading;
}

} // namespace

DxgiReading ReadDxgi()
{
    const auto library = LoadSystemLibrary(L"dxgi.dll");
    using CreateFactory = HRESULT(WINAPI*)(REFIID, void**);
    const auto create = library ? enumeration::FindFunction<CreateFactory>(library.get(), "CreateDXGIFactory1") : nullptr;
    if (!create) {
        return {Unavailable(Reason::NotPresent), {}};
    }
    const auto factory = Receive<IDXGIFactory1>(
        [&](IDXGIFactory1** received) { return create(idxgiFactory1Id, reinterpret_cast<void**>(received)); });
    if (!factory.object) {
        return {Failed(CodeOf(factory.result)), {}};
    }
    return ListAdapters(*factory.object.Get());
}

} // namespace orvel::shared::inventory
