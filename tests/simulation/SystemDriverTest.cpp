// The simulated OpenCL, WMI and DXGI with a caller that breaks their rules, and the search for the simulated DLLs.

#include <array>

#include <doctest/doctest.h>

#include <dxgi.h>
#include <wbemidl.h>

#include "Drivers.h"

using namespace orvel::tests;

namespace {

constexpr uint32_t nameParameter = 0x102B;
constexpr uint64_t gpuType = 4;

Json MachineWith(const Json& name)
{
    return {{"opencl", {{"platforms", {{{"devices", {{{"type", "gpu"}, {"CL_DEVICE_NAME", name}}}}}}}}}};
}

void* FirstDevice(const Driver& opencl)
{
    void* platform = nullptr;
    REQUIRE(opencl.Call("clGetPlatformIDs", 1U, &platform, nullptr) == 0);
    void* device = nullptr;
    REQUIRE(opencl.Call("clGetDeviceIDs", platform, gpuType, 1U, &device, nullptr) == 0);
    return device;
}

/// The size that the driver reports for the name, and the text that it writes into zeroed memory.
std::pair<size_t, std::string> NameOf(const Json& answer)
{
    Simulate(MachineWith(answer));
    const Driver opencl(L"opencl.dll");
    void* const device = FirstDevice(opencl);
    size_t bytes = 0;
    CHECK(opencl.Call("clGetDeviceInfo", device, nameParameter, size_t{0}, nullptr, &bytes) == 0);
    std::string text(bytes, '\0');
    CHECK(opencl.Call("clGetDeviceInfo", device, nameParameter, bytes, text.data(), nullptr) == 0);
    return {bytes, text};
}

} // namespace

TEST_CASE("OpenCL reports an invalid handle and a buffer that is too small")
{
    Simulate(MachineWith("Card"));
    const Driver opencl(L"opencl.dll");
    void* const former = FirstDevice(opencl);
    Simulate(MachineWith("Card"));
    void* const device = FirstDevice(opencl);
    std::array<char, 4> text{};
    CHECK(opencl.Call("clGetDeviceInfo", former, nameParameter, text.size(), text.data(), nullptr) == -33);
    CHECK(opencl.Call("clGetDeviceInfo", device, nameParameter, text.size(), text.data(), nullptr) == -30);
    void* none = nullptr;
    CHECK(opencl.Call("clGetDeviceIDs", former, gpuType, 1U, &none, nullptr) == -32);
    CHECK(TakeViolations() == Violations{"opencl clGetDeviceInfo 0x102B: the device is not alive",
                                         "opencl clGetDeviceInfo 0x102B: the buffer is too small",
                                         "opencl clGetDeviceIDs: the platform is not alive"});
}

TEST_CASE("OpenCL reports a call without outputs; a null handle results from a wrong count")
{
    Simulate(MachineWith("Card"));
    const Driver opencl(L"opencl.dll");
    void* const device = FirstDevice(opencl);
    void* platform = nullptr;
    CHECK(opencl.Call("clGetPlatformIDs", 0U, nullptr, nullptr) == -30);
    CHECK(opencl.Call("clGetPlatformIDs", 0U, &platform, nullptr) == -30);
    CHECK(opencl.Call("clGetDeviceInfo", device, nameParameter, size_t{0}, nullptr, nullptr) == -30);
    CHECK(TakeViolations() == Violations{"opencl clGetPlatformIDs: nothing is asked for",
                                         "opencl clGetPlatformIDs: nothing is asked for",
                                         "opencl clGetDeviceInfo 0x102B: nothing is asked for"});
    size_t bytes = 0;
    CHECK(opencl.Call("clGetDeviceIDs", nullptr, gpuType, 1U, &platform, nullptr) == -32);
    CHECK(opencl.Call("clGetDeviceInfo", nullptr, nameParameter, size_t{0}, nullptr, &bytes) == -33);
    CHECK(TakeViolations().empty());
}

TEST_CASE("OpenCL returns the devices of the requested type, and the parameters in the file")
{
    Simulate(MachineWith("Card"));
    const Driver opencl(L"opencl.dll");
    void* platform = nullptr;
    REQUIRE(opencl.Call("clGetPlatformIDs", 1U, &platform, nullptr) == 0);
    uint32_t count = 7;
    CHECK(opencl.Call("clGetDeviceIDs", platform, uint64_t{2}, 0U, nullptr, &count) == -1); // of type CPU
    CHECK(count == 0);
    std::array<void*, 3> devices{platform, platform, platform};
    CHECK(opencl.Call("clGetDeviceIDs", platform, gpuType, 3U, devices.data(), &count) == 0);
    CHECK(count == 1);
    CHECK_FALSE(devices[1]);
    uint32_t units = 0;
    constexpr uint32_t unitsParameter = 0x1002;
    CHECK(opencl.Call("clGetDeviceInfo", devices[0], unitsParameter, sizeof units, &units, nullptr) == -30);
    CHECK(TakeViolations().empty());
}

TEST_CASE("OpenCL can report the size of a text without its terminator, and write nothing")
{
    CHECK(NameOf("Card") == std::pair(size_t{5}, std::string("Card\0", 5)));
    CHECK(NameOf({{"status", 0}, {"value", "Card"}, {"writes", "unterminated"}}) ==
          std::pair(size_t{4}, std::string("Card")));
    CHECK(NameOf({{"status", 0}, {"value", "Card"}, {"writes", "nothing"}}) == std::pair(size_t{5}, std::string(5, '\0')));
}

TEST_CASE("opencl.dll is unloaded with its last reference unless the file pins it")
{
    Json machine = MachineWith("Card");
    machine["opencl"]["pinned"] = false;
    Simulate(machine);
    CHECK_FALSE(::GetModuleHandleW(L"opencl.dll"));
    const HMODULE opencl = ::LoadLibraryW(L"opencl.dll");
    REQUIRE(opencl);
    const auto getPlatforms = reinterpret_cast<int32_t (*)(uint32_t, void**, uint32_t*)>(
        reinterpret_cast<void*>(::GetProcAddress(opencl, "clGetPlatformIDs")));
    uint32_t count = 0;
    CHECK(getPlatforms(0, nullptr, &count) == 0);
    CHECK(count == 1);
    CHECK(::FreeLibrary(opencl));
    CHECK_FALSE(::GetModuleHandleW(L"opencl.dll"));
    CHECK(!::GetProcAddress(opencl, "clGetPlatformIDs"));
    CHECK(TakeViolations().empty());
    CHECK(getPlatforms(0, nullptr, &count) == -5);
    CHECK(TakeViolations() == Violations{"opencl clGetPlatformIDs: opencl.dll is not loaded any more"});
}

TEST_CASE("A call after its DLL has been unloaded is a violation")
{
    Simulate({{"searched", true}, {"adl", Json::object()}, {"adlx", Json::object()}});
    void* destroy = nullptr;
    void* terminate = nullptr;
    {
        const Driver adl(L"atiadlxx.dll");
        const Driver adlx(L"amdadlx64.dll");
        destroy = adl.Find("ADL2_Main_Control_Destroy");
        terminate = adlx.Find("ADLXTerminate");
    }
    CHECK(reinterpret_cast<int32_t (*)(void*)>(destroy)(nullptr) == -2);
    CHECK(reinterpret_cast<int32_t (*)()>(terminate)() == 7);
    CHECK(TakeViolations() == Violations{"adl ADL2_Main_Control_Destroy: atiadlxx.dll is not loaded any more",
                                         "adlx ADLXTerminate: amdadlx64.dll is not loaded any more"});
}

TEST_CASE("With \"searched\" the Windows search finds the DLLs that the machine has, and no others")
{
    const std::array<const wchar_t*, 4> names = {L"opencl.dll", L"nvapi64.dll", L"atiadlxx.dll", L"amdadlx64.dll"};
    Simulate({{"searched", true},
              {"opencl", Json::object()},
              {"nvapi", Json::object()},
              {"adl", Json::object()},
              {"adlx", Json::object()}});
    for (const wchar_t* name : names) {
        CHECK_FALSE(::GetModuleHandleW(name));
        const HMODULE module = ::LoadLibraryW(name);
        REQUIRE(module);
        wchar_t path[MAX_PATH];
        ::GetModuleFileNameW(module, path, MAX_PATH);
        CHECK(std::wstring(path).find(L"\\simulation\\") != std::wstring::npos);
        ::FreeLibrary(module);
        CHECK_FALSE(::GetModuleHandleW(name));
    }
    Simulate({{"searched", true}});
    for (const wchar_t* name : names) {
        CHECK_FALSE(::LoadLibraryW(name));
    }
}

TEST_CASE("A COM object of WMI or DXGI is invalid after its last release")
{
    Simulate(Machine("intel-laptop"));
    IWbemLocator* locator = nullptr;
    REQUIRE(::CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_IWbemLocator,
                               reinterpret_cast<void**>(&locator)) == S_OK);
    locator->Release();
    CHECK(TakeViolations().empty());
    CHECK(CallSlot(locator, 1) == static_cast<int32_t>(RPC_E_DISCONNECTED));
    CHECK(TakeViolations() == Violations{"wmi: a call on an object that is not alive"});
    const Driver dxgi(L"dxgi.dll");
    IDXGIFactory* factory = nullptr;
    REQUIRE(dxgi.Call("CreateDXGIFactory", &IID_IDXGIFactory, &factory) == S_OK);
    factory->Release();
    CallSlot(factory, 7, 0U, static_cast<void*>(nullptr));
    CHECK(TakeViolations() == Violations{"dxgi: a call on an object that is not alive"});
}
