#include "system/SharedSystemMemory.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include <wrl/client.h>

#include "formulas/NumberText.h"
#include "platform/Dxgi.h"

namespace orvel::shared::enumeration {

namespace {

using Microsoft::WRL::ComPtr;

/// The object that a call returns; null if the call fails, even if it wrote one.
template <typename Interface, typename Call>
ComPtr<Interface> Received(Call call)
{
    Interface* object = nullptr;
    ComPtr<Interface> received;
    if (SUCCEEDED(call(&object))) {
        *received.GetAddressOf() = object; // not Attach, to which MinGW's headers add a reference
    }
    return received;
}

std::vector<DXGI_ADAPTER_DESC> AdapterDescriptions(IDXGIFactory& factory)
{
    std::vector<DXGI_ADAPTER_DESC> descriptions;
    for (UINT index = 0;; ++index) {
        const auto adapter =
            Received<IDXGIAdapter>([&](IDXGIAdapter** received) { return factory.EnumAdapters(index, received); });
        if (!adapter) {
            return descriptions;
        }
        DXGI_ADAPTER_DESC description{};
        adapter->GetDesc(&description);
        descriptions.push_back(description);
    }
}

std::string WithoutHyphens(std::string text)
{
    std::erase(text, '-');
    return text;
}

} // namespace

std::string GetSharedSystemMemory(const PnpDeviceId& adapter)
{
    const auto vendor = static_cast<UINT>(ToInt(adapter.Vendor, 16));
    const auto device = static_cast<UINT>(ToInt(adapter.Device, 16));
    const UINT subsystem = ToUnsignedLong(WithoutHyphens(adapter.Subsystem), 16);

    const auto factory = Received<IDXGIFactory>(
        [](IDXGIFactory** received) { return ::CreateDXGIFactory(idxgiFactoryId, reinterpret_cast<void**>(received)); });
    if (!factory) {
        return {};
    }
    const auto descriptions = AdapterDescriptions(*factory.Get());
    const auto isThisAdapter = [&](const DXGI_ADAPTER_DESC& listed) {
        return listed.VendorId == vendor && listed.DeviceId == device && listed.SubSysId == subsystem;
    };
    const auto described = std::find_if(descriptions.begin(), descriptions.end(), isThisAdapter);
    const uint64_t bytes = described == descriptions.end() ? 0 : described->SharedSystemMemory;
    return std::to_string(static_cast<int64_t>(bytes >> 30));
}

} // namespace orvel::shared::enumeration
