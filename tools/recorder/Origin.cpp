#include "Origin.h"

#include <windows.h>

#include "platform/FileVersion.h"
#include "platform/Handles.h"
#include "platform/TextEncoding.h"

namespace orvel::recorder {

using namespace orvel::shared::enumeration;

namespace {

std::string WindowsVersion()
{
    using GetVersion = LONG(WINAPI*)(OSVERSIONINFOW*); // unlike GetVersionEx, it does not depend on the program's manifest
    OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof version;
    if (const auto getVersion = FindFunction<GetVersion>(::GetModuleHandleW(L"ntdll.dll"), "RtlGetVersion")) {
        getVersion(&version);
    }
    return std::to_string(version.dwMajorVersion) + "." + std::to_string(version.dwMinorVersion) + "." +
           std::to_string(version.dwBuildNumber);
}

} // namespace

Json RecordOrigin(const std::set<std::string>& hangingDlls)
{
    Json origin = {{"program", ORVEL_VERSION}, {"windows", WindowsVersion()}};
    using WineVersion = const char* (*)();
    if (const auto wine = FindFunction<WineVersion>(::GetModuleHandleW(L"ntdll.dll"), "wine_get_version")) {
        origin["wine"] = wine();
    }
    origin["dlls"] = Json::array();
    for (const char* name : {"opencl.dll", "nvapi64.dll", "nvml.dll", "atiadlxx.dll", "amdadlx64.dll", "dxgi.dll"}) {
        const ModuleHandle module(hangingDlls.contains(name) ? nullptr : ::LoadLibraryW(ToUtf16(name).c_str()));
        if (!module) {
            continue;
        }
        const std::wstring path = PathOf(module.get());
        origin["dlls"].push_back({{"dll", name}, {"path", ToUtf8(path)}, {"version", FileVersion(path)}});
    }
    return origin;
}

} // namespace orvel::recorder
