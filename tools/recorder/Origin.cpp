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

Json RecordOrigin()
{
    Json origin = {{"program", ORVEL_VERSION}, {"windows", WindowsVersion()}};
    using WineVersion = const char* (*)();
    if (const auto wine = FindFunction<WineVersion>(::GetModuleHandleW(L"ntdll.dll"), "wine_get_version")) {
        origin["wine"] = wine();
    }
    origin["dlls"] = Json::array();
    for (const wchar_t* name :
         {L"opencl.dll", L"nvapi64.dll", L"nvml.dll", L"atiadlxx.dll", L"amdadlx64.dll", L"dxgi.dll"}) {
        const ModuleHandle module(::LoadLibraryW(name));
        if (!module) {
            continue;
        }
        const std::wstring path = PathOf(module.get());
        origin["dlls"].push_back({{"dll", ToUtf8(name)}, {"path", ToUtf8(path)}, {"version", FileVersion(path)}});
    }
    return origin;
}

} // namespace orvel::recorder
