#include "Interfaces.h"

#include <dxgi.h>
#include <wrl/client.h>

#include "platform/Handles.h"

namespace orvel::recorder {

using namespace orvel::shared::enumeration;
using Microsoft::WRL::ComPtr;

namespace {

// Spelled out here because the import libraries of the compilers do not all carry it.
constexpr GUID idxgiFactoryId = {0x7B7166EC, 0x21C7, 0x44AE, {0xB2, 0x1A, 0xC9, 0xAE, 0x32, 0x1A, 0xE3, 0x69}};

Json RecordAdapter(IDXGIAdapter& adapter)
{
    DXGI_ADAPTER_DESC description{};
    adapter.GetDesc(&description);
    const std::wstring_view name(description.Description, std::size(description.Description));
    return {
        {"Description", Text(name.substr(0, name.find(L'\0')))},
        {"VendorId", description.VendorId},
        {"DeviceId", description.DeviceId},
        {"SubSysId", description.SubSysId},
        {"SharedSystemMemory", static_cast<uint64_t>(description.SharedSystemMemory)},
    };
}

Json RecordAdapters(IDXGIFactory& factory)
{
    Json adapters = Json::array();
    for (UINT index = 0;; ++index) {
        ComPtr<IDXGIAdapter> adapter;
        if (FAILED(factory.EnumAdapters(index, adapter.GetAddressOf())) || !adapter) {
            return adapters;
        }
        adapters.push_back(RecordAdapter(*adapter.Get()));
    }
}

} // namespace

std::optional<Json> RecordDxgi()
{
    using CreateFactory = HRESULT(WINAPI*)(REFIID, void**);
    const ModuleHandle module(::LoadLibraryW(L"dxgi.dll"));
    const auto create = module ? FindFunction<CreateFactory>(module.get(), "CreateDXGIFactory") : nullptr;
    if (!create) {
        return std::nullopt;
    }
    IDXGIFactory* received = nullptr;
    const HRESULT status = create(idxgiFactoryId, reinterpret_cast<void**>(&received));
    if (FAILED(status)) {
        return Json{{"factory", status}};
    }
    ComPtr<IDXGIFactory> factory;
    *factory.GetAddressOf() = received; // not Attach, to which MinGW's headers add a reference
    return Json{{"factory", status}, {"adapters", factory ? RecordAdapters(*factory.Get()) : Json::array()}};
}

} // namespace orvel::recorder
