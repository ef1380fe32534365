#include <algorithm>

#include <dxgi.h>

#include "loading/Export.h"
#include "loading/ModuleSetup.h"
#include "machine/CurrentMachine.h"
#include "machine/Text.h"
#include "windows/ComObject.h"
#include "windows/SystemScope.h"

using namespace orvel::simulation;

namespace {

/// The part of DXGI's objects that nobody here needs.
template <typename Object, typename Contract>
class DxgiObject : public ComObject<Object, Counted::Dxgi, Contract, IDXGIObject> {
public:
    STDMETHODIMP SetPrivateData(REFGUID, UINT, const void*) override { return E_NOTIMPL; }
    STDMETHODIMP SetPrivateDataInterface(REFGUID, const IUnknown*) override { return E_NOTIMPL; }
    STDMETHODIMP GetPrivateData(REFGUID, UINT*, void*) override { return E_NOTIMPL; }
    STDMETHODIMP GetParent(REFIID, void**) override { return E_NOTIMPL; }
};

class Adapter final : public DxgiObject<Adapter, IDXGIAdapter> {
public:
    explicit Adapter(const DxgiAdapterModel& adapter) : model(adapter) {}

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
        const std::wstring text = ToWide(model.description);
        std::copy_n(text.begin(), std::min(text.size(), std::size(description->Description) - 1), description->Description);
        description->VendorId = model.vendorId;
        description->DeviceId = model.deviceId;
        description->SubSysId = model.subSysId;
        description->SharedSystemMemory = model.sharedSystemMemoryBytes;
        return S_OK;
    }

private:
    DxgiAdapterModel model;
};

class Factory final : public DxgiObject<Factory, IDXGIFactory> {
public:
    explicit Factory(const DxgiModel& dxgi) : model(dxgi) {}

    STDMETHODIMP EnumAdapters(UINT index, IDXGIAdapter** adapter) override
    {
        AddToTrace("dxgi EnumAdapters " + std::to_string(index));
        if (!adapter) {
            return DXGI_ERROR_INVALID_CALL;
        }
        *adapter = nullptr;
        if (index >= model.adapters.size()) {
            return DXGI_ERROR_NOT_FOUND;
        }
        *adapter = new Adapter(model.adapters[index]);
        return S_OK;
    }

    STDMETHODIMP MakeWindowAssociation(HWND, UINT) override { return E_NOTIMPL; }
    STDMETHODIMP GetWindowAssociation(HWND*) override { return E_NOTIMPL; }
    STDMETHODIMP CreateSwapChain(IUnknown*, DXGI_SWAP_CHAIN_DESC*, IDXGISwapChain**) override
    {
        return DXGI_ERROR_UNSUPPORTED;
    }
    STDMETHODIMP CreateSoftwareAdapter(HMODULE, IDXGIAdapter**) override { return DXGI_ERROR_UNSUPPORTED; }

private:
    DxgiModel model;
};

HRESULT AskSystem(REFIID id, void** factory)
{
    const auto function = SystemFunction<decltype(CreateDXGIFactory)>(L"dxgi.dll", "CreateDXGIFactory");
    return function ? function(id, factory) : DXGI_ERROR_UNSUPPORTED;
}

HRESULT CreateFactory(const Machine& machine, REFIID id, void** factory)
{
    if (machine.dxgi.standing == Standing::Missing) {
        return DXGI_ERROR_UNSUPPORTED;
    }
    if (const int32_t status = machine.dxgi.model.factory.code; status != 0) {
        return status;
    }
    auto* const object = new Factory(machine.dxgi.model);
    const HRESULT result = object->QueryInterface(id, factory);
    object->Release();
    return result;
}

} // namespace

SIMULATED HRESULT WINAPI Sim_CreateDXGIFactory(REFIID id, void** factory)
{
    const auto machine = CurrentMachine();
    if (machine->dxgi.standing == Standing::System || SystemScope::IsActive()) {
        return AskSystem(id, factory);
    }
    AddToTrace("dxgi CreateDXGIFactory");
    if (!factory) {
        return E_POINTER;
    }
    *factory = nullptr;
    return CreateFactory(*machine, id, factory);
}
