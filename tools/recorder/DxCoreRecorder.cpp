#include "Interfaces.h"

#include <algorithm>

#include "interfaces/DxCoreInterfaces.h"
#include "sources/Received.h"
#include "sources/SystemLibrary.h"

namespace orvel::recorder {

using namespace orvel::shared;
using namespace orvel::shared::enumeration;
using inventory::Receive;

namespace {

struct Attribute {
    const char* Name; ///< in a machine file
    GUID Id;
};

/// Those that an inventory asks for.
constexpr Attribute attributes[] = {
    {"D3D11_GRAPHICS", dxCoreD3D11Graphics},
    {"D3D12_CORE_COMPUTE", dxCoreD3D12CoreCompute},
};

template <typename Interface, typename Call>
inventory::Received<Interface> ReceiveAs(Call call)
{
    return Receive<Interface>([&](Interface** received) { return call(reinterpret_cast<void**>(received)); });
}

Json RecordAdapter(IDXCoreAdapter& adapter)
{
    LUID luid{};
    const HRESULT hasLuid = adapter.GetProperty(DXCoreAdapterProperty::InstanceLuid, sizeof luid, &luid);
    Json answers = {{"InstanceLuid", Answer(hasLuid, inventory::NumberOf(luid), SUCCEEDED(hasLuid))}};
    if (adapter.IsPropertySupported(DXCoreAdapterProperty::IsIntegrated)) {
        bool isIntegrated = false;
        const HRESULT status = adapter.GetProperty(DXCoreAdapterProperty::IsIntegrated, sizeof isIntegrated, &isIntegrated);
        answers["IsIntegrated"] = Answer(status, isIntegrated, SUCCEEDED(status));
    }
    return answers;
}

Json RecordItem(IDXCoreAdapterList& list, uint32_t index)
{
    const auto adapter =
        ReceiveAs<IDXCoreAdapter>([&](void** received) { return list.GetAdapter(index, dxCoreAdapterId, received); });
    return adapter.object ? RecordAdapter(*adapter.object.Get()) : Json{{"GetAdapter", adapter.result}};
}

/// Adds what one list has. An adapter that an earlier list has too is one adapter with both attributes.
void AddList(const Attribute& attribute, IDXCoreAdapterList& list, Json& adapters)
{
    const size_t earlier = adapters.size();
    const uint32_t count = list.GetAdapterCount();
    for (uint32_t index = 0; index < count; ++index) {
        Json found = RecordItem(list, index);
        const auto end = adapters.begin() + static_cast<std::ptrdiff_t>(earlier);
        const auto same = std::find_if(adapters.begin(), end, [&](Json adapter) {
            const Json names = adapter["attributes"];
            const bool isNew = std::find(names.begin(), names.end(), attribute.Name) == names.end();
            adapter.erase("attributes");
            return isNew && adapter == found;
        });
        if (same != end) {
            (*same)["attributes"].push_back(attribute.Name);
        } else {
            found["attributes"] = Json::array({attribute.Name});
            adapters.push_back(found);
        }
    }
}

Json RecordAdapters(IDXCoreAdapterFactory& factory)
{
    Json section = {{"adapters", Json::array()}};
    for (const Attribute& attribute : attributes) {
        const auto list = ReceiveAs<IDXCoreAdapterList>(
            [&](void** received) { return factory.CreateAdapterList(1, &attribute.Id, dxCoreListId, received); });
        if (list.object) {
            AddList(attribute, *list.object.Get(), section["adapters"]);
        } else {
            section["CreateAdapterList"] = list.result;
        }
    }
    return section;
}

std::optional<Json> RecordSection()
{
    const auto library = inventory::LoadSystemLibrary(L"dxcore.dll");
    using CreateFactory = HRESULT(WINAPI*)(const GUID&, void**);
    const auto create = library ? FindFunction<CreateFactory>(library.get(), "DXCoreCreateAdapterFactory") : nullptr;
    if (!create) {
        return std::nullopt;
    }
    const auto factory =
        ReceiveAs<IDXCoreAdapterFactory>([&](void** received) { return create(dxCoreFactoryId, received); });
    return factory.object ? RecordAdapters(*factory.object.Get()) : Json{{"DXCoreCreateAdapterFactory", factory.result}};
}

} // namespace

Recorded<std::optional<Json>> RecordDxCore(uint32_t patienceMilliseconds)
{
    return RecordOnThread("dxcore DXCoreCreateAdapterFactory", std::optional(Json::object()), patienceMilliseconds,
                          [](WatchedThread<std::optional<Json>>& thread) { thread.Publish(RecordSection(), ""); });
}

} // namespace orvel::recorder
