// An enumeration and an inventory list DXGI's adapters with functions of different versions, which need not list the same.

#include "Interfaces.h"

#include <algorithm>

#include <dxgi.h>

#include "platform/Handles.h"
#include "sources/Received.h"
#include "sources/SystemLibrary.h"

namespace orvel::recorder {

using namespace orvel::shared::enumeration;
using orvel::shared::inventory::NumberOf;
using orvel::shared::inventory::Receive;

namespace {

// Spelled out here because the import libraries of the compilers do not all carry them.
constexpr GUID idxgiFactoryId = {0x7B7166EC, 0x21C7, 0x44AE, {0xB2, 0x1A, 0xC9, 0xAE, 0x32, 0x1A, 0xE3, 0x69}};
constexpr GUID idxgiFactory1Id = {0x770AAE78, 0xF26F, 0x4DBA, {0xA8, 0x29, 0x25, 0x3C, 0x83, 0xD1, 0xB3, 0x87}};

/// A driver that never ends its list has no more adapters than an inventory takes.
constexpr UINT mostAdapters = 1024;

using CreateFactory = HRESULT(WINAPI*)(REFIID, void**);

/// What both descriptions of an adapter have.
template <typename Description>
Json RecordDescription(const Description& description)
{
    const std::wstring_view name(description.Description, std::size(description.Description));
    return {
        {"Description", WideText(name.substr(0, name.find(L'\0')))},
        {"VendorId", description.VendorId},
        {"DeviceId", description.DeviceId},
        {"SubSysId", description.SubSysId},
        {"Revision", description.Revision},
        {"DedicatedVideoMemory", static_cast<uint64_t>(description.DedicatedVideoMemory)},
        {"DedicatedSystemMemory", static_cast<uint64_t>(description.DedicatedSystemMemory)},
        {"SharedSystemMemory", static_cast<uint64_t>(description.SharedSystemMemory)},
        {"Luid", NumberOf(description.AdapterLuid)},
    };
}

Json RecordAdapter(IDXGIAdapter& adapter)
{
    DXGI_ADAPTER_DESC description{};
    adapter.GetDesc(&description);
    return RecordDescription(description);
}

/// The description without `Flags` where the call for it fails.
Json RecordAdapter1(IDXGIAdapter1& adapter)
{
    DXGI_ADAPTER_DESC1 description{};
    const HRESULT status = adapter.GetDesc1(&description);
    Json answers = SUCCEEDED(status) ? RecordDescription(description) : RecordAdapter(adapter);
    if (SUCCEEDED(status)) {
        answers["Flags"] = description.Flags;
    } else {
        answers["GetDesc1"] = status;
    }
    return answers;
}

/// As an enumeration lists them.
Json RecordAdapters(IDXGIFactory& factory)
{
    Json adapters = Json::array();
    for (UINT index = 0; index < mostAdapters; ++index) {
        const auto adapter =
            Receive<IDXGIAdapter>([&](IDXGIAdapter** received) { return factory.EnumAdapters(index, received); });
        if (!adapter.object) {
            return adapters;
        }
        adapters.push_back(RecordAdapter(*adapter.object.Get()));
    }
    return adapters;
}

/// As an inventory lists them.
Json RecordAdapters1(IDXGIFactory1& factory)
{
    Json section = {{"adapters", Json::array()}};
    for (UINT index = 0; index < mostAdapters; ++index) {
        const auto adapter =
            Receive<IDXGIAdapter1>([&](IDXGIAdapter1** received) { return factory.EnumAdapters1(index, received); });
        if (!adapter.object) {
            if (adapter.result != DXGI_ERROR_NOT_FOUND) {
                section["EnumAdapters1"] = adapter.result;
            }
            return section;
        }
        section["adapters"].push_back(RecordAdapter1(*adapter.object.Get()));
    }
    return section;
}

/// What DXGI answers an enumeration; nothing without the DLL.
std::optional<Json> RecordForEnumeration()
{
    const ModuleHandle module(::LoadLibraryW(L"dxgi.dll"));
    const auto create = module ? FindFunction<CreateFactory>(module.get(), "CreateDXGIFactory") : nullptr;
    if (!create) {
        return std::nullopt;
    }
    const auto factory = Receive<IDXGIFactory>(
        [&](IDXGIFactory** received) { return create(idxgiFactoryId, reinterpret_cast<void**>(received)); });
    return Json{{"factory", factory.result},
                {"adapters", factory.object ? RecordAdapters(*factory.object.Get()) : Json::array()}};
}

/// What DXGI answers an inventory; nothing without the DLL in Windows' folder.
std::optional<Json> RecordForInventory()
{
    const auto module = shared::inventory::LoadSystemLibrary(L"dxgi.dll");
    const auto create = module ? FindFunction<CreateFactory>(module.get(), "CreateDXGIFactory1") : nullptr;
    if (!create) {
        return std::nullopt;
    }
    const auto factory = Receive<IDXGIFactory1>(
        [&](IDXGIFactory1** received) { return create(idxgiFactory1Id, reinterpret_cast<void**>(received)); });
    Json section = factory.object ? RecordAdapters1(*factory.object.Get()) : Json::object();
    section["CreateDXGIFactory1"] = factory.result;
    return section;
}

Json WithoutKeysOfVersion1(Json adapter)
{
    adapter.erase("Flags");
    adapter.erase("GetDesc1");
    return adapter;
}

/// Both lists in one, in which each keeps its order.
Json MergedLists(const Json& adapters, const Json& adapters1)
{
    Json merged = Json::array();
    size_t next = 0;
    for (Json adapter : adapters1) {
        if (next < adapters.size() && adapters[next] == WithoutKeysOfVersion1(adapter)) {
            ++next;
        } else {
            adapter["listed_by"] = {"EnumAdapters1"};
        }
        merged.push_back(adapter);
    }
    for (; next < adapters.size(); ++next) {
        merged.push_back(adapters[next]);
        merged.back()["listed_by"] = {"EnumAdapters"};
    }
    return merged;
}

Json Merged(Json section, const Json& inventory)
{
    const Json& status = inventory["CreateDXGIFactory1"];
    if (status != section["factory"]) {
        section["CreateDXGIFactory1"] = status;
    }
    if (inventory.contains("EnumAdapters1")) {
        section["EnumAdapters1"] = inventory["EnumAdapters1"];
    }
    if (inventory.contains("adapters")) {
        section["adapters"] = MergedLists(section["adapters"], inventory["adapters"]);
    }
    return section;
}

using Section = std::optional<Json>;

/// A hang of the first list ends an enumeration too.
void Read(WatchedThread<Section>& thread)
{
    const Section section = RecordForEnumeration();
    thread.Publish(section, "dxgi CreateDXGIFactory1");
    const Section inventory = section ? RecordForInventory() : std::nullopt;
    thread.Publish(inventory ? Merged(*section, *inventory) : section, "");
}

} // namespace

Recorded<Section> RecordDxgi(uint32_t patienceMilliseconds)
{
    return RecordOnThread("dxgi CreateDXGIFactory", Section(Json::object()), patienceMilliseconds, &Read);
}

} // namespace orvel::recorder
