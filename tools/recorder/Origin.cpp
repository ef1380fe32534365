#include "Origin.h"

#include <windows.h>

#include <winver.h>

#include "platform/Handles.h"

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

std::string FileVersion(const wchar_t* path)
{
    DWORD unused = 0;
    const DWORD bytes = ::GetFileVersionInfoSizeW(path, &unused);
    std::vector<BYTE> data(bytes);
    VS_FIXEDFILEINFO* info = nullptr;
    UINT length = 0;
    if (bytes == 0 || !::GetFileVersionInfoW(path, 0, bytes, data.data()) ||
        !::VerQueryValueW(data.data(), L"\\", reinterpret_cast<void**>(&info), &length)) {
        return {};
    }
    return std::to_string(HIWORD(info->dwFileVersionMS)) + "." + std::to_string(LOWORD(info->dwFileVersionMS)) + "." +
           std::to_string(HIWORD(info->dwFileVersionLS)) + "." + std::to_string(LOWORD(info->dwFileVersionLS));
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
        std::wstring path(32768, L'\0');
        path.resize(::GetModuleFileNameW(module.get(), path.data(), static_cast<DWORD>(path.size())));
        origin["dlls"].push_back({{"dll", Text(std::wstring_view(name))},
                                  {"path", Text(std::wstring_view(path))},
                                  {"version", FileVersion(path.c_str())}});
    }
    return origin;
}

} // namespace orvel::recorder
