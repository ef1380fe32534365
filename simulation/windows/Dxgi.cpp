#include <algorithm>

#include <dxgi.h>

#include "loading/Export.h"
#include "loading/ModuleSetup.h"
#include "machine/CurrentMachine.h"
#include "windows/ComObject.h"
#include "windows/SystemScope.h"

using namespace orvel::simulation;

namespace {

/// The part of DXGI's objects that nobody here needs.
template <typename Object, typename Contract, typename Former>
class DxgiObject : public ComObject<Object, Counted::Dxgi, Contract, Former, IDXGIObject> {
public:
    STDMETHODIMP SetPrivateData(REFGUID, UINT, const void*) override { return E_NOTIMPL; }
    STDMETHODIMP SetPrivateDataInterface(REFGUID, const IUnknown*) override { return E_NOTIMPL; }
    STDMETHODIMP GetPrivateData(REFGUID, UINT*, void*) override { return E_NOTIMPL; }
    STDMETHODIMP GetParent(REFIID, void**) override { return E_NOTIMPL; }
};

class Adapter final : public DxgiObject<Adapter, IDXGIAdapter1, IDXGIAdapter> {
public:
    Adapter(const DxgiAdapterModel& adapter, UINT number) : model(adapter), index(number) {}

    STDMETHODIMP EnumOutputs(UINT, IDXGIOutput** output) override
    {
        if (output) {
            *output = nullptr;
        }
        return DXGI_ERROR_NOT_FOUND;
    }

    STDMETHODIMP CheckInterfaceSupport(REFGUID, LARGE_INTEGER*) override { return DXGI_ERROR_UNSUPPORTED; }

    STDMETHODIMP GetDesc(DXGI_ADAPTER_DESC* description) override
    {
        AddToTrace("dxgi GetDesc");
        if (!description) {
            return E_INVALIDARG;
        }
        *description = {};
        Describe(*description);
        return S_OK;
    }

    STDMETHODIMP GetDesc1(DXGI_ADAPTER_DESC1* description) override
    {
        AddToTrace("dxgi GetDesc1 " + std::to_string(index));
        if (!description) {
            return E_INVALIDARG;
        }
        if (model.getDesc1.code != 0) {
            return model.getDesc1.code;
        }
        *description = {};
        Describe(*description);
        description->Flags = model.flags;
        return S_OK;
    }

private:
    /// What both descriptions have.
    template <typename Description>
    void Describe(Description& description) const
    {
        const std::wstring& text = model.description.text;
        std::copy_n(text.begin(), std::min(text.size(), std::size(description.Description) - 1), description.Description);
        description.VendorId = model.vendorId;
        description.DeviceId = model.deviceId;
        description.SubSysId = model.subSysId;
        description.Revision = model.revision;
        description.DedicatedVideoMemory = model.dedicatedVideoMemoryBytes;
        description.DedicatedSystemMemory = model.dedicatedSystemMemoryBytes;
        description.SharedSystemMemory = model.sharedSystemMemoryBytes;
        description.AdapterLuid = {static_cast<DWORD>(model.luid), static_cast<LONG>(model.luid >> 32)};
    }

    DxgiAdapterModel model;
    UINT index;
};

class Factory final : public DxgiObject<Factory, IDXGIFactory1, IDXGIFactory> {
public:
    explicit Factory(const DxgiModel& dxgi) : model(dxgi) {}

    STDMETHODIMP EnumAdapters(UINT index, IDXGIAdapter** adapter) override
    {
        AddToTrace("dxgi EnumAdapters " + std::to_string(index));
        if (!adapter) {
            return DXGI_ERROR_INVALID_CALL;
        }
        *adapter = nullptr;
        const DxgiAdapterModel* const found = Find(index, &DxgiAdapterModel::isListedFirst);
        if (!found) {
            return DXGI_ERROR_NOT_FOUND;
        }
        *adapter = new Adapter(*found, index);
        return S_OK;
    }

    STDMETHODIMP EnumAdapters1(UINT index, IDXGIAdapter1** adapter) override
    {
        AddToTrace("dxgi EnumAdapters1 " + std::to_string(index));
        if (!adapter) {
            return DXGI_ERROR_INVALID_CALL;
        }
        *adapter = nullptr;
        const DxgiAdapterModel* const found = Find(index, &DxgiAdapterModel::isListedSecond);
        if (!found) {
            return model.enumAdapters1.given ? model.enumAdapters1.code : DXGI_ERROR_NOT_FOUND;
        }
        if (const int32_t status = found->enumAdapters1.code; status != 0) {
            return status;
        }
        *adapter = new Adapter(*found, index);
        return S_OK;
    }

    STDMETHODIMP_(BOOL) IsCurrent() override { return TRUE; }

    STDMETHODIMP MakeWindowAssociation(HWND, UINT) override { return E_NOTIMPL; }
    STDMETHODIMP GetWindowAssociation(HWND*) override { return E_NOTIMPL; }
    STDMETHODIMP CreateSwapChain(IUnknown*, DXGI_SWAP_CHAIN_DESC*, IDXGISwapChain**) override
    {
        return DXGI_ERROR_UNSUPPORTED;
    }
    STDMETHODIMP CreateSoftwareAdapter(HMODULE, IDXGIAdapter**) override { return DXGI_ERROR_UNSUPPORTED; }

private:
    /// The adapter that a function lists at an index; null behind the last.
    const DxgiAdapterModel* Find(UINT index, bool DxgiAdapterModel::*isListed) const
    {
        UINT next = 0;
        const auto found = std::ranges::find_if(
            model.adapters, [&](const DxgiAdapterModel& adapter) { return adapter.*isListed && next++ == index; });
        return found == model.adapters.end() ? nullptr : &*found;
    }

    DxgiModel model;
};

using CreateFunction = HRESULT WINAPI(REFIID, void**);

HRESULT AskSystem(const char* functionName, REFIID id, void** factory)
{
    const auto function = SystemFunction<CreateFunction>(L"dxgi.dll", functionName);
    return function ? function(id, factory) : DXGI_ERROR_UNSUPPORTED;
}

/// The status of a function that creates a factory; one that the file does not set is CreateDXGIFactory's.
int32_t StatusOf(const DxgiModel& model, bool isFirst)
{
    return isFirst || !model.createFactory1.given ? model.factory.code : model.createFactory1.code;
}

HRESULT Create(const char* functionName, bool isFirst, REFIID id, void** factory)
{
    const auto machine = CurrentMachine();
    if (machine->dxgi.standing == Standing::System || SystemScope::IsActive()) {
        return AskSystem(functionName, id, factory);
    }
    AddToTrace(std::string("dxgi ") + functionName);
    if (!factory) {
        return E_POINTER;
    }
    *factory = nullptr;
    if (machine->dxgi.standing == Standing::Missing) {
        return DXGI_ERROR_UNSUPPORTED;
    }
    if (const int32_t status = StatusOf(machine->dxgi.model, isFirst); status != 0) {
        return status;
    }
    auto* const object = new Factory(machine->dxgi.model);
    const HRESULT result = object->QueryInterface(id, factory);
    object->Release();
    return result;
}

} // namespace

SIMULATED HRESULT WINAPI Sim_CreateDXGIFactory(REFIID id, void** factory)
{
    return Create("CreateDXGIFactory", true, id, factory);
}

SIMULATED HRESULT WINAPI Sim_CreateDXGIFactory1(REFIID id, void** factory)
{
    return Create("CreateDXGIFactory1", false, id, factory);
}
