#include "platform/OpenCLWrapper.h"

#include <cstdlib>
#include <cstring>

#include <doctest/doctest.h>

#include "support/HostLog.h"
#include "support/ReplacedImport.h"

using namespace orvel::shared::enumeration;
using namespace orvel::tests;

namespace {

Json Device(const std::string& name, uint32_t vendor = 0x8086)
{
    return {{"type", "gpu"},
            {"CL_DEVICE_NAME", name},
            {"CL_DEVICE_VENDOR_ID", vendor},
            {"CL_DEVICE_MAX_COMPUTE_UNITS", 24},
            {"CL_DEVICE_MAX_CLOCK_FREQUENCY", 1150},
            {"CL_DEVICE_MAX_CONSTANT_ARGS", 8}};
}

Json MachineWith(const std::vector<Json>& devices)
{
    return {{"opencl", {{"platforms", Json::array({{{"devices", devices}}})}}}};
}

std::string Clock(const std::string& name, const std::string& vendor)
{
    return OpenCLWrapper().GetDeviceInfoByName(name, CL_DEVICE_MAX_CLOCK_FREQUENCY, vendor);
}

} // namespace

TEST_CASE("Without opencl.dll the constructor of the OpenCL wrapper throws")
{
    Simulate(Json::object());
    CHECK_THROWS_WITH_AS(OpenCLWrapper(), "Failed to load opencl.dll", std::runtime_error);
}

TEST_CASE("Each OpenCL parameter is returned as the text of its type")
{
    Json gpu = Device("GPU one", 0x10DE);
    gpu["CL_DEVICE_MAX_COMPUTE_UNITS"] = 4294967295U;
    Simulate(MachineWith({gpu}));
    const OpenCLWrapper opencl;
    const cl_device_id device = opencl.GetAllDevices().at(0);
    CHECK(opencl.GetDeviceInfo(device, CL_DEVICE_VENDOR_ID) == "10de");
    CHECK(opencl.GetDeviceInfo(device, CL_DEVICE_MAX_COMPUTE_UNITS) == "4294967295");
    CHECK(opencl.GetDeviceInfo(device, CL_DEVICE_MAX_CLOCK_FREQUENCY) == "1150");
    CHECK(opencl.GetDeviceInfo(device, CL_DEVICE_MAX_CONSTANT_ARGS) == "8");
    CHECK(opencl.GetDeviceInfo(device, CL_DEVICE_NAME) == "GPU one");
}

TEST_CASE("Of two OpenCL devices with the same name the first in platform order is used")
{
    Json first = Device("GPU");
    first["CL_DEVICE_MAX_CLOCK_FREQUENCY"] = 900;
    Simulate(
        {{"opencl", {{"platforms", {{{"devices", Json::array({first})}}, {{"devices", Json::array({Device("GPU")})}}}}}}});
    CHECK(Clock("GPU", "8086") == "900");
    CHECK(OpenCLWrapper().GetAllDevices().size() == 2);
}

TEST_CASE("CPU devices are ignored")
{
    Json processor = Device("GPU");
    processor["type"] = "cpu";
    Simulate(MachineWith({processor}));
    HostLog log;
    CHECK(Clock("GPU", "") == "");
    CHECK(log.Lines == LogLines{"error OpenCLWrapper::GetDevices: Failed to get Open CL devices"}); // -1: device not found
}

TEST_CASE("A device is matched by its exact name and, if given, its vendor")
{
    Simulate(MachineWith({Device("GPU", 0x1002), Device("GPU 2", 0x8086)}));
    CHECK(Clock("GPU", "1002") == "1150");
    CHECK(Clock("GPU", "") == "1150");
    CHECK(Clock("GPU", "8086") == "");
    CHECK(Clock("gpu", "1002") == "");
    CHECK(Clock("GPU ", "1002") == "");
}

TEST_CASE("A vendor id whose hexadecimal text ends in zeros is only matched without these zeros")
{
    Simulate(MachineWith({Device("GPU", 0x1000)}));
    CHECK(Clock("GPU", "1000") == "");
    CHECK(Clock("GPU", "1") == "1150");
    Simulate(MachineWith({Device("GPU", 0)}));
    CHECK(Clock("GPU", "0") == "");
}

TEST_CASE("A failed platform count is logged, and its output is used anyway")
{
    Json machine = MachineWith({Device("GPU")});
    machine["opencl"]["platforms_count"] = {{"status", -1001}, {"value", 1}};
    Simulate(machine);
    HostLog log;
    CHECK(Clock("GPU", "8086") == "1150");
    CHECK(log.Lines == LogLines{"error OpenCLWrapper::GetPlatforms: Failed to get Open CL platforms"});
}

TEST_CASE("An impossible count of platforms or devices is logged as a failed count, and is 0")
{
    for (const uint32_t count : {65537U, 4294967295U}) {
        for (const int status : {0, -1001}) {
            CAPTURE(count);
            CAPTURE(status);
            Json platforms = MachineWith({Device("GPU")});
            platforms["opencl"]["platforms_count"] = {{"status", status}, {"value", count}};
            Simulate(platforms);
            {
                HostLog log;
                CHECK(OpenCLWrapper().GetPlatforms().empty());
                CHECK(log.Lines == LogLines{"error OpenCLWrapper::GetPlatforms: Failed to get Open CL platforms"});
            }
            Json devices = MachineWith({Device("GPU")});
            devices["opencl"]["platforms"][0]["devices_count"] = {{"status", status}, {"value", count}};
            Simulate(devices);
            HostLog log;
            CHECK(OpenCLWrapper().GetAllDevices().empty());
            CHECK(log.Lines == LogLines{"error OpenCLWrapper::GetDevices: Failed to get Open CL devices"});
        }
    }
}

TEST_CASE("If the platform count fails without writing a count, or the fetch fails, there are no platforms")
{
    Json machine = MachineWith({Device("GPU")});
    machine["opencl"]["platforms_count"] = -1001;
    Simulate(machine);
    {
        HostLog log;
        CHECK(OpenCLWrapper().GetPlatforms().empty());
        CHECK(log.Lines == LogLines{"error OpenCLWrapper::GetPlatforms: Failed to get Open CL platforms"});
    }
    machine["opencl"]["platforms_count"] = 0;
    machine["opencl"]["platforms_fetch"] = -6;
    Simulate(machine);
    HostLog log;
    CHECK(OpenCLWrapper().GetPlatforms().empty());
    CHECK(log.Lines == LogLines{"error OpenCLWrapper::GetPlatforms: Failed to get Open CL platforms"});
}

TEST_CASE("A platform whose device count or fetch fails is logged and skipped")
{
    for (const char* call : {"devices_count", "devices_fetch"}) {
        CAPTURE(call);
        Simulate({{"opencl",
                   {{"platforms",
                     {{{"devices", Json::array({Device("GPU A")})}, {call, -5}},
                      {{"devices", Json::array({Device("GPU B")})}}}}}}});
        HostLog log;
        CHECK(Clock("GPU B", "8086") == "1150");
        CHECK(log.Lines == LogLines{"error OpenCLWrapper::GetDevices: Failed to get Open CL devices"});
    }
}

TEST_CASE("A function that the OpenCL loader lacks is logged, and the result is empty")
{
    Json machine = MachineWith({Device("GPU")});
    machine["opencl"]["missing"] = {"clGetPlatformIDs"};
    Simulate(machine);
    {
        HostLog log;
        CHECK(Clock("GPU", "") == "");
        CHECK(log.Lines ==
              LogLines{"error OpenCLWrapper::GetPlatforms: Failed to get function pointer for clGetPlatformIDs"});
    }
    machine["opencl"]["missing"] = {"clGetDeviceIDs"};
    Simulate(machine);
    {
        HostLog log;
        CHECK(Clock("GPU", "") == "");
        CHECK(log.Lines == LogLines{"error OpenCLWrapper::GetDevices: Failed to get function pointer for clGetDeviceIDs"});
    }
    machine["opencl"]["missing"] = {"clGetDeviceInfo"};
    Simulate(machine);
    HostLog log;
    CHECK(Clock("GPU", "") == "");
    CHECK(log.Lines == LogLines{"error OpenCLWrapper::GetDeviceInfo: Failed to get function pointer for clGetDeviceInfo"});
}

TEST_CASE("A failed size call and a failed value call are warnings, and the text is empty")
{
    Json gpu = Device("GPU");
    gpu["CL_DEVICE_MAX_CLOCK_FREQUENCY"] = {{"status", -30}};
    Simulate(MachineWith({gpu}));
    {
        HostLog log;
        CHECK(Clock("GPU", "8086") == "");
        CHECK(log.Lines == LogLines{"warning OpenCLWrapper::GetDeviceInfo: Failed to get device info value size"});
    }
    gpu["CL_DEVICE_MAX_CLOCK_FREQUENCY"] = {{"status", -5}, {"value", 1150}};
    Simulate(MachineWith({gpu}));
    HostLog log;
    CHECK(Clock("GPU", "8086") == "");
    CHECK(log.Lines == LogLines{"warning OpenCLWrapper::GetDeviceInfo: Failed to get device info value"});
}

namespace {

size_t releases = 0;

BOOL WINAPI CountRelease(HMODULE)
{
    ++releases;
    return TRUE;
}

} // namespace

TEST_CASE("Every failed call releases the module one time too many, and the wrapper stays usable")
{
    Json gpu = Device("GPU");
    gpu.erase("CL_DEVICE_MAX_CLOCK_FREQUENCY");
    Simulate(MachineWith({gpu}));
    const ReplacedImport freeLibrary(TestModule(), L"kernel32.dll", "FreeLibrary", reinterpret_cast<void*>(&CountRelease));
    releases = 0;
    {
        const OpenCLWrapper opencl;
        const cl_device_id device = opencl.GetAllDevices().at(0);
        CHECK(opencl.GetDeviceInfo(device, CL_DEVICE_NAME) == "GPU");
        CHECK(releases == 0);
        for (size_t failures = 1; failures <= 3; ++failures) {
            CHECK(opencl.GetDeviceInfo(device, CL_DEVICE_MAX_CLOCK_FREQUENCY) == "");
            CHECK(releases == failures);
        }
    }
    CHECK(releases == 4);
}

namespace {

void* dirtyBlocks[32];

cl_int CL_API_CALL WriteNothing(cl_device_id, cl_device_info, size_t, void* value, size_t* bytes)
{
    if (bytes) {
        *bytes = 400;
        // Makes sure that freed memory of this size is not zero by chance.
        for (void*& block : dirtyBlocks) {
            block = std::memset(std::malloc(*bytes), 0xAA, *bytes);
        }
        for (void* block : dirtyBlocks) {
            std::free(block);
        }
    }
    return value || bytes ? CL_SUCCESS : CL_INVALID_VALUE;
}

FARPROC WINAPI FindWriteNothing(HMODULE, LPCSTR)
{
    return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&WriteNothing));
}

} // namespace

TEST_CASE("A value whose size the driver reports, but which it does not write, is empty or 0")
{
    Simulate(MachineWith({Device("GPU")}));
    const OpenCLWrapper opencl;
    const cl_device_id device = opencl.GetAllDevices().at(0);
    const ReplacedImport getProcAddress(TestModule(), L"kernel32.dll", "GetProcAddress",
                                        reinterpret_cast<void*>(&FindWriteNothing));
    CHECK(opencl.GetDeviceInfo(device, CL_DEVICE_NAME) == "");
    CHECK(opencl.GetDeviceInfo(device, CL_DEVICE_MAX_COMPUTE_UNITS) == "0");
}
