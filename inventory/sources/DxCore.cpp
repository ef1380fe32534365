#include "sources/DxCore.h"

#include <windows.h>

#include "interfaces/DxCoreInterfaces.h"
#include "sources/Received.h"
#include "sources/SystemLibrary.h"

namespace orvel::shared::inventory {

namespace {

using enumeration::DXCoreAdapterProperty;
using enumeration::IDXCoreAdapter;
using enumeration::IDXCoreAdapterFactory;
using enumeration::IDXCoreAdapterList;

/// Each adapter has one of these.
constexpr GUID attributes[] = {enumeration::dxCoreD3D11Graphics, enumeration::dxCoreD3D12CoreCompute};

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
    const auto adapter = ReceiveAs<IDXCoreAdapter>(
        [&](void** received) { return list.GetAdapter(index, enumeration::dxCoreAdapterId, received); });
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
        [&](void** received) { return factory.CreateAdapterList(1, &attribute, enumeration::dxCoreListId, received); });
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
    const auto factory =
        ReceiveAs<IDXCoreAdapterFactory>([&](void** received) { return create(enumeration::dxCoreFactoryId, received); });
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
