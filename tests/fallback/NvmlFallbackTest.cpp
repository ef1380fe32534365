// The nvml.dll for computers without an NVIDIA driver, loaded by a program. Its search for the driver's nvml.dll is
// redirected to a folder of the tests, so that the results do not depend on the computer's system folder.

#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include <doctest/doctest.h>

#include <windows.h>

#include "platform/LoadedModule.h"
#include "support/ReplacedImport.h"

using orvel::tests::ReplacedImport;

namespace {

using Device = void*;

std::filesystem::path folderOfDriver; // replaces the system folder

std::filesystem::path ProgramFolder()
{
    wchar_t program[MAX_PATH];
    ::GetModuleFileNameW(nullptr, program, MAX_PATH);
    return std::filesystem::path(program).parent_path();
}

UINT WINAPI TellFolderOfDriver(LPWSTR buffer, UINT size)
{
    const std::wstring folder = folderOfDriver.wstring();
    if (folder.size() >= size) {
        return static_cast<UINT>(folder.size() + 1);
    }
    std::wcscpy(buffer, folder.c_str());
    return static_cast<UINT>(folder.size());
}

/// Loads the fallback on a computer whose driver's nvml.dll is in this folder of the tests.
class Fallback {
public:
    explicit Fallback(const char* driver) : module(::LoadLibraryW((ProgramFolder() / "fallback" / "nvml.dll").c_str()))
    {
        REQUIRE(module);
        folderOfDriver = ProgramFolder() / driver;
        import.emplace(module, L"kernel32.dll", "GetSystemDirectoryW", reinterpret_cast<void*>(&TellFolderOfDriver));
    }
    Fallback(const Fallback&) = delete;
    Fallback& operator=(const Fallback&) = delete;
    ~Fallback()
    {
        import.reset();
        ::FreeLibrary(module);
    }

    template <typename... Arguments>
    int Call(const char* name, Arguments... arguments) const
    {
        return Find<int (*)(Arguments...)>(name)(arguments...);
    }

    std::string ErrorString(int status) const { return Find<const char* (*)(int)>("nvmlErrorString")(status); }

    template <typename Function>
    Function Find(const char* name) const
    {
        return reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(module, name)));
    }

    HMODULE Module() const { return module; }

private:
    HMODULE module;
    std::optional<ReplacedImport> import;
};

/// The names that the library imports from nvml.dll.
std::vector<std::string> ImportedNames()
{
    std::ifstream file(std::filesystem::path(u8"" ORVEL_NVML_DEFINITION));
    std::vector<std::string> names;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("nvml")) {
            names.push_back(line);
        }
    }
    return names;
}

/// Every function returns the result for a computer without a driver.
void CheckHasNoDriver(const Fallback& nvml)
{
    unsigned int number = 77;
    int major = 77;
    int minor = 77;
    Device device = nullptr;
    char serial[30] = "untouched";
    CHECK(nvml.Call("nvmlInit_v2") == 9);
    CHECK(nvml.Call("nvmlShutdown") == 1);
    CHECK(nvml.Call("nvmlDeviceGetCount_v2", &number) == 1);
    CHECK(nvml.Call("nvmlDeviceGetHandleByIndex_v2", 0U, &device) == 1);
    CHECK(nvml.Call("nvmlDeviceGetSerial", device, &serial[0], 30U) == 1);
    CHECK(nvml.Call("nvmlDeviceGetCudaComputeCapability", device, &major, &minor) == 1);
    CHECK(nvml.Call("nvmlDeviceGetTemperatureThreshold", device, 3, &number) == 1);
    CHECK(nvml.Call("nvmlDeviceGetClockInfo", device, 2, &number) == 1);
    for (const char* name : {"nvmlDeviceGetCurrPcieLinkGeneration", "nvmlDeviceGetMaxPcieLinkGeneration",
                             "nvmlDeviceGetMaxPcieLinkWidth", "nvmlDeviceGetMemoryBusWidth"}) {
        CAPTURE(name);
        CHECK(nvml.Call(name, device, &number) == 1);
    }
    CHECK(std::string(serial) == "untouched");
    CHECK((number == 77 && major == 77 && minor == 77));
}

} // namespace

TEST_CASE("The fallback exports exactly the functions that the library imports")
{
    const Fallback nvml("no-driver");
    const auto names = ImportedNames();
    CHECK(names.size() == 13);
    for (const std::string& name : names) {
        CHECK_MESSAGE(nvml.Find<void*>(name.c_str()) != nullptr, name);
    }
    const auto* const exports =
        orvel::shared::enumeration::DirectoryOf<IMAGE_EXPORT_DIRECTORY>(nvml.Module(), IMAGE_DIRECTORY_ENTRY_EXPORT);
    CHECK(exports->NumberOfNames == 13);
}

TEST_CASE("Without a driver nvmlInit reports so, every other call reports \"uninitialised\", and nothing is written")
{
    CheckHasNoDriver(Fallback("no-driver"));
}

TEST_CASE("Without a driver the status codes have NVML's texts")
{
    const Fallback nvml("no-driver");
    CHECK(nvml.ErrorString(0) == "Success");
    CHECK(nvml.ErrorString(1) == "Uninitialized");
    CHECK(nvml.ErrorString(2) == "Invalid Argument");
    CHECK(nvml.ErrorString(3) == "Not Supported");
    CHECK(nvml.ErrorString(4) == "Insufficient Permissions");
    CHECK(nvml.ErrorString(5) == "Already Initialized");
    CHECK(nvml.ErrorString(6) == "Not Found");
    CHECK(nvml.ErrorString(7) == "Insufficient Size");
    CHECK(nvml.ErrorString(8) == "Insufficient External Power");
    CHECK(nvml.ErrorString(9) == "Driver Not Loaded");
    CHECK(nvml.ErrorString(10) == "Timeout");
    CHECK(nvml.ErrorString(11) == "Interrupt Request Issue");
    CHECK(nvml.ErrorString(12) == "NVML Shared Library Not Found");
    CHECK(nvml.ErrorString(13) == "Function Not Found");
    CHECK(nvml.ErrorString(14) == "Corrupted infoROM");
    CHECK(nvml.ErrorString(15) == "GPU is lost");
    CHECK(nvml.ErrorString(16) == "GPU requires reset");
    CHECK(nvml.ErrorString(17) == "GPU access blocked by the operating system");
    CHECK(nvml.ErrorString(18) == "Driver/library version mismatch");
    CHECK(nvml.ErrorString(19) == "In use by another client");
    CHECK(nvml.ErrorString(20) == "Insufficient Memory");
    CHECK(nvml.ErrorString(21) == "No data");
    CHECK(nvml.ErrorString(22) == "Vgpu ecc not supported");
    CHECK(nvml.ErrorString(23) == "Insufficient Resources");
    CHECK(nvml.ErrorString(24) == "Frequency not supported");
    CHECK(nvml.ErrorString(25) == "Argument version mismatch");
    CHECK(nvml.ErrorString(26) == "Deprecated");
    CHECK(nvml.ErrorString(27) == "Not Ready");
    CHECK(nvml.ErrorString(28) == "GPU Not Found");
    CHECK(nvml.ErrorString(29) == "Invalid state");
    CHECK(nvml.ErrorString(30) == "Reset type not supported");
    for (const int unknown : {-1, 31, 999, 12345}) {
        CAPTURE(unknown);
        CHECK(nvml.ErrorString(unknown) == "Unknown Error");
    }
}

TEST_CASE("Every call is forwarded to the driver's nvml.dll in the system folder")
{
    const Fallback nvml("stand-in-driver");
    unsigned int number = 0;
    int major = 0;
    int minor = 0;
    Device device = nullptr;
    CHECK(nvml.Call("nvmlInit_v2") == 0);
    CHECK(nvml.ErrorString(101) == "the driver's text");
    CHECK((nvml.Call("nvmlDeviceGetCount_v2", &number) == 103 && number == 3));
    CHECK((nvml.Call("nvmlDeviceGetHandleByIndex_v2", 1U, &device) == 104 && device == reinterpret_cast<void*>(0x1001)));
    CHECK(nvml.Call("nvmlDeviceGetCudaComputeCapability", device, &major, &minor) == 105);
    CHECK((major == 8 && minor == 6));
    CHECK((nvml.Call("nvmlDeviceGetTemperatureThreshold", device, 3, &number) == 106 && number == 93));
    CHECK((nvml.Call("nvmlDeviceGetCurrPcieLinkGeneration", device, &number) == 107 && number == 1));
    CHECK((nvml.Call("nvmlDeviceGetMaxPcieLinkGeneration", device, &number) == 108 && number == 4));
    CHECK((nvml.Call("nvmlDeviceGetMaxPcieLinkWidth", device, &number) == 109 && number == 16));
    CHECK((nvml.Call("nvmlDeviceGetClockInfo", device, 2, &number) == 110 && number == 7502));
    CHECK((nvml.Call("nvmlDeviceGetMemoryBusWidth", device, &number) == 111 && number == 192));
    CHECK(nvml.Call("nvmlShutdown") == 0);
}

TEST_CASE("The driver's own nvml.dll is loaded from the first session to the end of the last")
{
    const auto isLoaded = [] {
        return ::GetModuleHandleW((ProgramFolder() / "stand-in-driver" / "nvml.dll").c_str()) != nullptr;
    };
    const Fallback nvml("stand-in-driver");
    CHECK_FALSE(isLoaded());
    CHECK(nvml.Call("nvmlInit_v2") == 0);
    CHECK(nvml.Call("nvmlInit_v2") == 0);
    CHECK(nvml.Call("nvmlShutdown") == 0);
    CHECK(isLoaded());
    CHECK(nvml.Call("nvmlShutdown") == 0);
    CHECK_FALSE(isLoaded());
    CHECK(nvml.Call("nvmlShutdown") == 1); // without a session, NVML is not initialised
    CHECK(nvml.ErrorString(101) == "Unknown Error");
}

TEST_CASE("A function that the driver lacks returns 13")
{
    const Fallback nvml("stand-in-driver");
    char serial[30] = "";
    CHECK(nvml.Call("nvmlInit_v2") == 0);
    CHECK(nvml.Call("nvmlDeviceGetSerial", Device(), &serial[0], 30U) == 13);
    CHECK(nvml.Call("nvmlShutdown") == 0);
}

TEST_CASE("The fallback does not load itself from the system folder")
{
    CheckHasNoDriver(Fallback("fallback"));
}
