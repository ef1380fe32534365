// DLLs that a program loads from Windows' own folder alone, and DXCore, which is one of them.

#include <doctest/doctest.h>

#include <windows.h>

#include "simulation/Drivers.h"

using namespace orvel::tests;

namespace {

using orvel::shared::enumeration::FindFunction;
using orvel::shared::enumeration::ModuleHandle;

ModuleHandle LoadFromSystem(const wchar_t* name)
{
    ::SetLastError(ERROR_SUCCESS);
    return ModuleHandle(::LoadLibraryExW(name, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32));
}

bool HasFunction(const wchar_t* dll, const char* function)
{
    const auto module = LoadFromSystem(dll);
    return module && FindFunction<FARPROC>(module.get(), function) != nullptr;
}

constexpr GUID factoryId = {0x78ee5945, 0xc36e, 0x4b13, {0xa6, 0x69, 0x00, 0x5d, 0xd1, 0x1c, 0x0f, 0x06}};
constexpr GUID listId = {0x526c7776, 0x40e9, 0x459b, {0xb7, 0x11, 0xf3, 0x2a, 0xd7, 0x6d, 0xfc, 0x28}};
constexpr GUID adapterId = {0xf0db4c7f, 0xfe5a, 0x42a2, {0xbd, 0x62, 0xf2, 0xa6, 0xcf, 0x6f, 0xc8, 0x3e}};
constexpr GUID d3d11Graphics = {0x8c47866b, 0x7583, 0x450d, {0xf0, 0xf0, 0x6b, 0xad, 0xa8, 0x95, 0xaf, 0x4b}};

void* CreateDxCoreFactory(HMODULE dxcore, int32_t expected)
{
    using Create = HRESULT(WINAPI*)(const GUID&, void**);
    void* factory = nullptr;
    CHECK(FindFunction<Create>(dxcore, "DXCoreCreateAdapterFactory")(factoryId, &factory) == expected);
    return factory;
}

void Release(void* object)
{
    CallSlot<ULONG>(object, 2);
}

} // namespace

TEST_CASE("A DLL from Windows' own folder is the machine's, or not there")
{
    Simulate(Json::object());
    for (const auto* name : {L"dxgi.dll", L"dxcore.dll", L"nvml.dll", L"NVAPI64.DLL", L"amdadlx64.dll"}) {
        CHECK_FALSE(LoadFromSystem(name));
        CHECK(::GetLastError() == ERROR_MOD_NOT_FOUND);
    }
    CHECK(Trace().at(3) == "load nvapi64.dll");
    Simulate({{"dxgi", Json::object()},
              {"dxcore", Json::object()},
              {"nvml", Json::object()},
              {"nvapi", Json::object()},
              {"searched", true}});
    CHECK(HasFunction(L"dxgi.dll", "CreateDXGIFactory1"));
    CHECK(HasFunction(L"dxcore.dll", "DXCoreCreateAdapterFactory"));
    CHECK(HasFunction(L"nvml.dll", "nvmlInit_v2"));
    CHECK(HasFunction(L"nvapi64.dll", "nvapi_QueryInterface"));
    CHECK(LoadFromSystem(L"kernel32.dll")); // no interface's
    CHECK(Trace().size() == 4);
}

TEST_CASE("DXCore lists the adapters of an attribute, with their properties")
{
    Simulate({{"dxcore",
               {{"adapters",
                 {{{"InstanceLuid", 7}, {"IsIntegrated", true}},
                  {{"InstanceLuid", 8}, {"attributes", {"D3D12_CORE_COMPUTE"}}},
                  {{"GetAdapter", "0x887A0020"}}}}}}});
    {
        const auto dxcore = LoadFromSystem(L"dxcore.dll");
        void* const factory = CreateDxCoreFactory(dxcore.get(), S_OK);
        void *list = nullptr, *adapter = nullptr;
        REQUIRE(CallSlot(factory, 3, uint32_t{1}, &d3d11Graphics, &listId, &list) == S_OK);
        CHECK(CallSlot<uint32_t>(list, 4) == 2);
        REQUIRE(CallSlot(list, 3, uint32_t{0}, &adapterId, &adapter) == S_OK);
        uint64_t luid = 0;
        bool isIntegrated = false;
        CHECK(CallSlot(adapter, 6, uint32_t{0}, sizeof luid, &luid) == S_OK);
        CHECK(luid == 7);
        CHECK(CallSlot<bool>(adapter, 5, uint32_t{12}));
        CHECK_FALSE(CallSlot<bool>(adapter, 5, uint32_t{1}));
        CHECK(CallSlot(adapter, 6, uint32_t{12}, sizeof isIntegrated, &isIntegrated) == S_OK);
        CHECK(isIntegrated);
        void* none = adapter;
        CHECK(CallSlot(list, 3, uint32_t{1}, &adapterId, &none) == static_cast<int32_t>(0x887A0020));
        CHECK_FALSE(none);
        CHECK(Live()["dxcore"] == 3);
        for (void* object : {adapter, list, factory}) {
            Release(object);
        }
    }
    CHECK(Live()["dxcore"] == 0);
}

TEST_CASE("DXCore returns the statuses of the file, and reports callers that break its rules")
{
    Simulate({{"dxcore", {{"DXCoreCreateAdapterFactory", "0x80004002"}}}});
    CHECK_FALSE(CreateDxCoreFactory(LoadFromSystem(L"dxcore.dll").get(), E_NOINTERFACE));
    Simulate({{"dxcore", {{"CreateAdapterList", "0x80004005"}}}});
    void* const factory = CreateDxCoreFactory(LoadFromSystem(L"dxcore.dll").get(), S_OK);
    void* list = nullptr;
    CHECK(CallSlot(factory, 3, uint32_t{1}, &d3d11Graphics, &listId, &list) == E_FAIL);
    CHECK(CallSlot(factory, 3, uint32_t{0}, &d3d11Graphics, &listId, &list) == E_INVALIDARG);
    CHECK(TakeViolations() == Violations{"dxcore CreateAdapterList: no attribute"});
    Release(factory);
}

TEST_CASE("A DLL outside Windows' own folder is there for a program that looks elsewhere too")
{
    Simulate({{"nvml", Json::object()}, {"outside_system_folder", {"nvml.dll"}}});
    CHECK_FALSE(LoadFromSystem(L"nvml.dll"));
    CHECK(::GetLastError() == ERROR_MOD_NOT_FOUND);
    CHECK(ModuleHandle(::LoadLibraryW(L"nvml.dll")));
    CHECK_THROWS_WITH(Simulate({{"outside_system_folder", {"opencl.dll"}}}), doctest::Contains("unknown name"));
}
