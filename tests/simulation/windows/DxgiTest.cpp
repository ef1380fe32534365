// The simulated DXGI.

#include <cstring>

#include <doctest/doctest.h>

#include <dxgi.h>
#include <wrl/client.h>

#include "simulation/Drivers.h"

using namespace orvel::tests;

using Microsoft::WRL::ComPtr;

namespace {

Json OneAdapter(const std::string& description)
{
    return {{"dxgi",
             {{"adapters",
               {{{"VendorId", 0x8086},
                 {"DeviceId", 0x9BC4},
                 {"SubSysId", 0x09761028},
                 {"SharedSystemMemory", 8589934592},
                 {"Description", description}}}}}}};
}

HRESULT CreateFactory(ComPtr<IDXGIFactory>& factory)
{
    const Driver dxgi(L"dxgi.dll");
    return dxgi.Call("CreateDXGIFactory", &IID_IDXGIFactory, factory.ReleaseAndGetAddressOf());
}

} // namespace

TEST_CASE("DXGI has a factory if the machine has DXGI, unless the file makes it fail")
{
    ComPtr<IDXGIFactory> factory;
    Simulate(Json::object());
    CHECK(CreateFactory(factory) == DXGI_ERROR_UNSUPPORTED);
    Simulate({{"dxgi", {{"factory", "0x887A0022"}}}});
    CHECK(CreateFactory(factory) == DXGI_ERROR_NOT_CURRENTLY_AVAILABLE);
    CHECK_FALSE(factory.Get());
    Simulate({{"dxgi", Json::object()}});
    CHECK(CreateFactory(factory) == S_OK);
    CHECK(Live()["dxgi"] == 1);
    factory.Reset();
    CHECK(Live()["dxgi"] == 0);
}

TEST_CASE("DXGI rejects null and unknown interfaces")
{
    Simulate(OneAdapter("Card"));
    const Driver dxgi(L"dxgi.dll");
    CHECK(dxgi.Call("CreateDXGIFactory", &IID_IDXGIFactory, nullptr) == E_POINTER);
    void* none = &none;
    CHECK(dxgi.Call("CreateDXGIFactory", &IID_IDXGIAdapter, &none) == E_NOINTERFACE);
    CHECK_FALSE(none);
    ComPtr<IDXGIFactory> factory;
    REQUIRE(CreateFactory(factory) == S_OK);
    CHECK(factory->EnumAdapters(0, nullptr) == DXGI_ERROR_INVALID_CALL);
    ComPtr<IDXGIAdapter> adapter;
    REQUIRE(factory->EnumAdapters(0, &adapter) == S_OK);
    CHECK(adapter->GetDesc(nullptr) == E_INVALIDARG);
    CHECK(adapter->EnumOutputs(0, nullptr) == DXGI_ERROR_NOT_FOUND);
}

TEST_CASE("DXGI lists the adapters of the file, and none after the last")
{
    Simulate(OneAdapter("Card"));
    ComPtr<IDXGIFactory> factory;
    REQUIRE(CreateFactory(factory) == S_OK);
    ComPtr<IDXGIAdapter> adapter;
    REQUIRE(factory->EnumAdapters(0, &adapter) == S_OK);
    DXGI_ADAPTER_DESC description;
    std::memset(&description, 0xFF, sizeof description);
    CHECK(adapter->GetDesc(&description) == S_OK);
    CHECK(description.VendorId == 0x8086);
    CHECK(description.DeviceId == 0x9BC4);
    CHECK(description.SubSysId == 0x09761028);
    CHECK(description.SharedSystemMemory == 8589934592);
    CHECK(description.DedicatedVideoMemory == 0);
    CHECK(std::wstring(description.Description) == L"Card");
    auto* none = adapter.Get();
    CHECK(factory->EnumAdapters(1, &none) == DXGI_ERROR_NOT_FOUND);
    CHECK_FALSE(none);
    CHECK(Only(Trace(), "dxgi ") ==
          std::vector<std::string>{"dxgi CreateDXGIFactory", "dxgi EnumAdapters 0", "dxgi GetDesc", "dxgi EnumAdapters 1"});
}

TEST_CASE("DXGI truncates a description to 127 characters")
{
    Simulate(OneAdapter(std::string(200, 'x')));
    ComPtr<IDXGIFactory> factory;
    REQUIRE(CreateFactory(factory) == S_OK);
    ComPtr<IDXGIAdapter> adapter;
    REQUIRE(factory->EnumAdapters(0, &adapter) == S_OK);
    DXGI_ADAPTER_DESC description;
    CHECK(adapter->GetDesc(&description) == S_OK);
    CHECK(std::wstring(description.Description) == std::wstring(127, L'x'));
}

TEST_CASE("Each version of DXGI lists the adapters that the file says it lists")
{
    Json machine = OneAdapter("Both");
    Json& adapters = machine["dxgi"]["adapters"];
    const Json newer = {{"VendorId", 1}, {"Description", "Newer"}, {"listed_by", {"EnumAdapters1"}}};
    const Json older = {{"VendorId", 2}, {"Description", "Older"}, {"listed_by", {"EnumAdapters"}}};
    adapters = Json::array({newer, adapters[0], older});
    Simulate(machine);
    const Driver dxgi(L"dxgi.dll");
    ComPtr<IDXGIFactory1> factory;
    REQUIRE(dxgi.Call("CreateDXGIFactory1", &IID_IDXGIFactory1, factory.GetAddressOf()) == S_OK);
    const auto nameOf = [](IDXGIAdapter& adapter) {
        DXGI_ADAPTER_DESC description{};
        CHECK(adapter.GetDesc(&description) == S_OK);
        return std::wstring(description.Description);
    };
    for (const auto& [index, name] : {std::pair(0U, L"Both"), std::pair(1U, L"Older")}) {
        ComPtr<IDXGIAdapter> adapter;
        REQUIRE(factory->EnumAdapters(index, adapter.GetAddressOf()) == S_OK);
        CHECK(nameOf(*adapter.Get()) == name);
    }
    for (const auto& [index, name] : {std::pair(0U, L"Newer"), std::pair(1U, L"Both")}) {
        ComPtr<IDXGIAdapter1> adapter;
        REQUIRE(factory->EnumAdapters1(index, adapter.GetAddressOf()) == S_OK);
        CHECK(nameOf(*adapter.Get()) == name);
    }
    ComPtr<IDXGIAdapter1> none;
    CHECK(factory->EnumAdapters1(2, none.GetAddressOf()) == DXGI_ERROR_NOT_FOUND);
}
