#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <windows.h>

#include "loading/Export.h"
#include "machine/CurrentMachine.h"
#include "trace/Violations.h"
#include "windows/ComObject.h"

// The parts of DXCore that are simulated, with their published names and in their published places; mingw-w64 does not
// declare them.

enum class DXCoreAdapterProperty : uint32_t { InstanceLuid = 0, IsIntegrated = 12 };

MIDL_INTERFACE("f0db4c7f-fe5a-42a2-bd62-f2a6cf6fc83e")
IDXCoreAdapter : public IUnknown
{
    virtual bool STDMETHODCALLTYPE IsValid() = 0;
    virtual bool STDMETHODCALLTYPE IsAttributeSupported(REFGUID attribute) = 0;
    virtual bool STDMETHODCALLTYPE IsPropertySupported(DXCoreAdapterProperty property) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetProperty(DXCoreAdapterProperty property, size_t bytes, void* data) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetPropertySize(DXCoreAdapterProperty property, size_t * bytes) = 0;
};

MIDL_INTERFACE("526c7776-40e9-459b-b711-f32ad76dfc28")
IDXCoreAdapterList : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE GetAdapter(uint32_t index, REFIID id, void** adapter) = 0;
    virtual uint32_t STDMETHODCALLTYPE GetAdapterCount() = 0;
    virtual bool STDMETHODCALLTYPE IsStale() = 0;
};

MIDL_INTERFACE("78ee5945-c36e-4b13-a669-005dd11c0f06")
IDXCoreAdapterFactory : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE CreateAdapterList(uint32_t count, const GUID* attributes, REFIID id, void** list) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetAdapterByLuid(const LUID& luid, REFIID id, void** adapter) = 0;
};

#ifdef __CRT_UUID_DECL
__CRT_UUID_DECL(IDXCoreAdapter, 0xf0db4c7f, 0xfe5a, 0x42a2, 0xbd, 0x62, 0xf2, 0xa6, 0xcf, 0x6f, 0xc8, 0x3e)
__CRT_UUID_DECL(IDXCoreAdapterList, 0x526c7776, 0x40e9, 0x459b, 0xb7, 0x11, 0xf3, 0x2a, 0xd7, 0x6d, 0xfc, 0x28)
__CRT_UUID_DECL(IDXCoreAdapterFactory, 0x78ee5945, 0xc36e, 0x4b13, 0xa6, 0x69, 0x00, 0x5d, 0xd1, 0x1c, 0x0f, 0x06)
#endif

using namespace orvel::simulation;

namespace {

/// In the order of DxCoreAttribute.
constexpr GUID attributeIds[] = {
    {0x8c47866b, 0x7583, 0x450d, {0xf0, 0xf0, 0x6b, 0xad, 0xa8, 0x95, 0xaf, 0x4b}},
    {0x0c9ece4d, 0x2f6e, 0x4f01, {0x8c, 0x96, 0xe8, 0x9e, 0x33, 0x1b, 0x47, 0xb1}},
    {0x248e2800, 0xa793, 0x4724, {0xab, 0xaa, 0x23, 0xa6, 0xde, 0x1b, 0xe0, 0x90}},
};
static_assert(std::size(attributeIds) == dxCoreAttributeCount);

bool HasAttribute(const DxCoreAdapterModel& model, REFGUID id)
{
    const auto* found = std::ranges::find_if(attributeIds, [&](const GUID& each) { return IsEqualGUID(each, id); });
    return found != std::end(attributeIds) && model.attributes[static_cast<size_t>(found - attributeIds)];
}

/// Gives a new object under the id that the caller wants.
template <typename Object>
HRESULT HandOut(Object* object, REFIID id, void** target)
{
    const HRESULT result = object->QueryInterface(id, target);
    object->Release();
    return result;
}

template <typename Value>
HRESULT GiveValue(const Answer<Value>& answer, const std::string& call, size_t bytes, void* data)
{
    if (!data || bytes < sizeof(Value)) {
        return Refuse(call, "a null pointer or too small a buffer", E_INVALIDARG);
    }
    return answer.Give(DXGI_ERROR_UNSUPPORTED, {{data, sizeof(Value)}},
                       [&](const Value& value) { std::memcpy(data, &value, sizeof value); });
}

class Adapter final : public ComObject<Adapter, Counted::DxCore, IDXCoreAdapter> {
public:
    explicit Adapter(const DxCoreAdapterModel& adapter) : model(adapter) {}

    bool STDMETHODCALLTYPE IsValid() override { return true; }
    bool STDMETHODCALLTYPE IsAttributeSupported(REFGUID attribute) override { return HasAttribute(model, attribute); }

    bool STDMETHODCALLTYPE IsPropertySupported(DXCoreAdapterProperty property) override
    {
        AddToTrace("dxcore IsPropertySupported " + std::to_string(static_cast<uint32_t>(property)));
        return SizeOf(property) != 0;
    }

    HRESULT STDMETHODCALLTYPE GetProperty(DXCoreAdapterProperty property, size_t bytes, void* data) override
    {
        const std::string call = "dxcore GetProperty " + std::to_string(static_cast<uint32_t>(property));
        AddToTrace(call);
        if (SizeOf(property) == 0) {
            return DXGI_ERROR_INVALID_CALL;
        }
        return property == DXCoreAdapterProperty::InstanceLuid ? GiveValue(model.instanceLuid, call, bytes, data)
                                                               : GiveValue(model.isIntegrated, call, bytes, data);
    }

    HRESULT STDMETHODCALLTYPE GetPropertySize(DXCoreAdapterProperty property, size_t* bytes) override
    {
        if (!bytes) {
            return E_POINTER;
        }
        *bytes = SizeOf(property);
        return *bytes == 0 ? DXGI_ERROR_INVALID_CALL : S_OK;
    }

private:
    /// 0 for a property that the adapter does not have.
    size_t SizeOf(DXCoreAdapterProperty property) const
    {
        if (property == DXCoreAdapterProperty::InstanceLuid) {
            return model.instanceLuid.given ? sizeof(uint64_t) : 0;
        }
        return property == DXCoreAdapterProperty::IsIntegrated && model.isIntegrated.given ? sizeof(bool) : 0;
    }

    DxCoreAdapterModel model;
};

class AdapterList final : public ComObject<AdapterList, Counted::DxCore, IDXCoreAdapterList> {
public:
    explicit AdapterList(std::vector<DxCoreAdapterModel> all) : adapters(std::move(all)) {}

    HRESULT STDMETHODCALLTYPE GetAdapter(uint32_t index, REFIID id, void** adapter) override
    {
        const std::string call = "dxcore GetAdapter " + std::to_string(index);
        AddToTrace(call);
        if (!adapter) {
            return Refuse(call, "a null pointer", E_POINTER);
        }
        *adapter = nullptr;
        if (index >= adapters.size()) {
            return Refuse(call, "an index out of range", E_INVALIDARG);
        }
        const int32_t status = adapters[index].getAdapter.code;
        return status != 0 ? status : HandOut(new Adapter(adapters[index]), id, adapter);
    }

    uint32_t STDMETHODCALLTYPE GetAdapterCount() override
    {
        AddToTrace("dxcore GetAdapterCount");
        return static_cast<uint32_t>(adapters.size());
    }

    bool STDMETHODCALLTYPE IsStale() override { return false; }

private:
    std::vector<DxCoreAdapterModel> adapters;
};

class Factory final : public ComObject<Factory, Counted::DxCore, IDXCoreAdapterFactory> {
public:
    explicit Factory(const DxCoreModel& dxcore) : model(dxcore) {}

    HRESULT STDMETHODCALLTYPE CreateAdapterList(uint32_t count, const GUID* attributes, REFIID id, void** list) override
    {
        const std::string call = "dxcore CreateAdapterList";
        AddToTrace(call);
        if (!list) {
            return Refuse(call, "a null pointer", E_POINTER);
        }
        *list = nullptr;
        if (count == 0 || !attributes) {
            return Refuse(call, "no attribute", E_INVALIDARG);
        }
        if (model.createAdapterList.code != 0) {
            return model.createAdapterList.code;
        }
        std::vector<DxCoreAdapterModel> found;
        std::ranges::copy_if(model.adapters, std::back_inserter(found), [&](const DxCoreAdapterModel& adapter) {
            return std::all_of(attributes, attributes + count,
                               [&](const GUID& each) { return HasAttribute(adapter, each); });
        });
        return HandOut(new AdapterList(std::move(found)), id, list);
    }

    HRESULT STDMETHODCALLTYPE GetAdapterByLuid(const LUID& luid, REFIID id, void** adapter) override
    {
        const std::string call = "dxcore GetAdapterByLuid";
        AddToTrace(call);
        if (!adapter) {
            return Refuse(call, "a null pointer", E_POINTER);
        }
        *adapter = nullptr;
        const uint64_t number = uint64_t{static_cast<uint32_t>(luid.HighPart)} << 32 | luid.LowPart;
        const auto found = std::ranges::find_if(
            model.adapters, [&](const DxCoreAdapterModel& each) { return each.instanceLuid.value == number; });
        return found == model.adapters.end() ? E_INVALIDARG : HandOut(new Adapter(*found), id, adapter);
    }

private:
    DxCoreModel model;
};

} // namespace

/// Under its own name: a program that loads dxcore.dll gets orvel-simulation.dll (loading/SystemLoader).
SIMULATED HRESULT WINAPI DXCoreCreateAdapterFactory(REFIID id, void** factory)
{
    const auto machine = CurrentMachine();
    const std::string call = "dxcore DXCoreCreateAdapterFactory";
    AddToTrace(call);
    if (!factory) {
        return Refuse(call, "a null pointer", E_POINTER);
    }
    *factory = nullptr;
    if (machine->dxcore.standing != Standing::Simulated) {
        return E_NOINTERFACE;
    }
    const int32_t status = machine->dxcore.model.createFactory.code;
    return status != 0 ? status : HandOut(new Factory(machine->dxcore.model), id, factory);
}
