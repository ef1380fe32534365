#include "sources/DxCore.h"

#include <windows.h>

#include "sources/Received.h"
#include "sources/SystemLibrary.h"

namespace orvel::shared::inventory {

// The parts of DXCore that are used, with their published names and in their published places. They are not in an unnamed
// namespace: the compiler would see that nothing here implements them, and take every call for one of a pure function.

enum class DXCoreAdapterProperty : uint32_t { InstanceLuid = 0, IsIntegrated = 12 };

struct IDXCoreAdapter : IUnknown {
    virtual bool STDMETHODCALLTYPE IsValid() = 0;
    virtual bool STDMETHODCALLTYPE IsAttributeSupported(const GUID& attribute) = 0;
    virtual bool STDMETHODCALLTYPE IsPropertySupported(DXCoreAdapterProperty property) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetProperty(DXCoreAdapterProperty property, size_t bytes, void* data) = 0;
};

struct IDXCoreAdapterList : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetAdapter(uint32_t index, const GUID& interfaceId, void** adapter) = 0;
    virtual uint32_t STDMETHODCALLTYPE GetAdapterCount() = 0;
};

struct IDXCoreAdapterFactory : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE CreateAdapterList(uint32_t count, const GUID* attributes, const GUID& interfaceId,
                                                        void** list) = 0;
};

namespace {

constexpr GUID factoryId = {0x78ee5945, 0xc36e, 0x4b13, {0xa6, 0x69, 0x00, 0x5d, 0xd1, 0x1c, 0x0f, 0x06}};
constexpr GUID listId = {0x526c7776, 0x40e9, 0x459b, {0xb7, 0x11, 0xf3, 0x2a, 0xd7, 0x6d, 0xfc, 0x28}};
constexpr GUID adapterId = {0xf0db4c7f, 0xfe5a, 0x42a2, {0xbd, 0x62, 0xf2, 0xa6, 0xcf, 0x6f, 0xc8, 0x3e}};

/// Each adapter has one of these: DXCORE_ADAPTER_ATTRIBUTE_D3D11_GRAPHICS, …_D3D12_CORE_COMPUTE.
constexpr GUID attributes[] = {
    {0x8c47866b, 0x7583, 0x450d, {0xf0, 0xf0, 0x6b, 0xad, 0xa8, 0x95, 0xaf, 0x4b}},
    {0x248e2800, 0xa793, 0x4724, {0xab, 0xaa, 0x23, 0xa6, 0xde, 0x1b, 0xe0, 0x90}},
};

template <typename Interface, typename Call>
Received<Interface> ReceiveAs(Call call)
{
    return Receive<Interface>([&](Interface** received) { return call(reinterpret_cast<void**>(received)); });
}

Answer IsIntegrated(IDXCoreAdapter& adapter)
{
    if (!adapter.IsPropertySupported(DXCoreAdapterProperty::IsIntegrated)) {
        return Unsupported(Reason::NotSupported);
    }
    bool isIntegrated = false;
    const HRESULT result = adapter.GetProperty(DXCoreAdapterProperty::IsIntegrated, sizeof isIntegrated, &isIntegrated);
    return SUCCEEDED(result) ? Known(isIntegrated) : Failed(CodeOf(result));
}

/// What cannot be listed or has no LUID is nobody's: the reading says that it is not complete.
void AddAdapter(IDXCoreAdapterList& list, uint32_t index, DxCoreReading& reading)
{
    const auto adapter =
        ReceiveAs<IDXCoreAdapter>([&](void** received) { return list.GetAdapter(index, adapterId, received); });
    if (!adapter.object) {
        reading.end = Failed(CodeOf(adapter.result));
        return;
    }
    LUID luid{};
    const HRESULT result = adapter.object->GetProperty(DXCoreAdapterProperty::InstanceLuid, sizeof luid, &luid);
    if (FAILED(result)) {
        reading.end = Failed(CodeOf(result));
        return;
    }
    if (const auto number = NumberOf(luid); !reading.adapters.contains(number)) {
        reading.adapters[number] = IsIntegrated(*adapter.object.Get());
    }
}

void AddAdapters(IDXCoreAdapterFactory& factory, const GUID& attribute, DxCoreReading& reading)
{
    const auto list = ReceiveAs<IDXCoreAdapterList>(
        [&](void** received) { return factory.CreateAdapterList(1, &attribute, listId, received); });
    if (!list.object) {
        reading.end = Failed(CodeOf(list.result));
        return;
    }
    const uint32_t count = list.object->GetAdapterCount();
    for (uint32_t index = 0; index < count; ++index) {
        AddAdapter(*list.object.Get(), index, reading);
    }
}

} // namespace

DxCoreReading ReadDxCore()
{
    const auto library = LoadSystemLibrary(L"dxcore.dll");
    using CreateFactory = HRESULT(WINAPI*)(const GUID&, void**);
    const auto create =
        library ? enumeration::FindFunction<CreateFactory>(library.get(), "DXCoreCreateAdapterFactory") : nullptr;
    if (!create) {
        return {Unavailable(Reason::NotPresent), {}};
    }
    const auto factory = ReceiveAs<IDXCoreAdapterFactory>([&](void** received) { return create(factoryId, received); });
    if (!factory.object) {
        return {Failed(CodeOf(factory.result)), {}};
    }
    DxCoreReading reading;
    for (const auto& attribute : attributes) {
        AddAdapters(*factory.object.Get(), attribute, reading);
    }
    return reading;
}

} // namespace orvel::shared::inventory
