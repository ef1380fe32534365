#include "SystemChecks.h"

#include <cstdio>
#include <vector>

#include <windows.h>

#include <objbase.h>
#include <oleauto.h>
#include <wbemidl.h>
#include <winver.h>
#include <wrl/client.h>

namespace orvel::tools {

namespace {

using Microsoft::WRL::ComPtr;

std::string Hex(long status)
{
    char text[16];
    std::snprintf(text, sizeof(text), "0x%08lX", static_cast<unsigned long>(status));
    return text;
}

std::string ToUtf8(const wchar_t* text)
{
    const int bytes = ::WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<size_t>(bytes > 0 ? bytes : 1), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text, -1, utf8.data(), bytes, nullptr, nullptr);
    utf8.pop_back();
    return utf8;
}

std::string VersionOf(const wchar_t* path)
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

HRESULT Connect(ComPtr<IWbemServices>& services)
{
    ComPtr<IWbemLocator> locator;
    const HRESULT status = ::CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_IWbemLocator,
                                              reinterpret_cast<void**>(locator.GetAddressOf()));
    if (FAILED(status)) {
        return status;
    }
    const BSTR path = ::SysAllocString(L"\\\\.\\root\\cimv2");
    const HRESULT connected = locator->ConnectServer(path, nullptr, nullptr, nullptr, 0, nullptr, nullptr, &services);
    ::SysFreeString(path);
    return connected;
}

/// Runs a query and counts its rows.
HRESULT CountRows(const std::string& wql, int& rows)
{
    ComPtr<IWbemServices> services;
    if (const HRESULT status = Connect(services); FAILED(status)) {
        return status;
    }
    const BSTR language = ::SysAllocString(L"WQL");
    const BSTR text = ::SysAllocString(std::wstring(wql.begin(), wql.end()).c_str());
    ComPtr<IEnumWbemClassObject> found;
    const HRESULT status = services->ExecQuery(language, text, WBEM_FLAG_FORWARD_ONLY, nullptr, &found);
    ::SysFreeString(language);
    ::SysFreeString(text);
    for (;;) {
        ComPtr<IWbemClassObject> row;
        ULONG count = 0;
        if (FAILED(status) || found->Next(WBEM_INFINITE, 1, &row, &count) != WBEM_S_NO_ERROR || count == 0) {
            return status;
        }
        ++rows;
    }
}

} // namespace

Finding FindDll(const std::string& name)
{
    const HMODULE module = ::LoadLibraryA(name.c_str());
    if (!module) {
        return {false, "error " + std::to_string(::GetLastError())};
    }
    std::wstring path(32768, L'\0');
    path.resize(::GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size())));
    ::FreeLibrary(module);
    return {true, {}, ToUtf8(path.c_str()), VersionOf(path.c_str())};
}

Finding FindWmiNamespace()
{
    ComPtr<IWbemServices> services;
    const HRESULT status = Connect(services);
    return {SUCCEEDED(status), SUCCEEDED(status) ? "" : Hex(status)};
}

Finding FindWmiClass(const std::string& name)
{
    int rows = 0;
    const HRESULT status = CountRows("SELECT * FROM " + name, rows);
    return {SUCCEEDED(status), SUCCEEDED(status) ? std::to_string(rows) + (rows == 1 ? " row" : " rows") : Hex(status)};
}

bool HasAdapterOf(const std::string& vendorId)
{
    int rows = 0;
    CountRows("SELECT * FROM Win32_VideoController WHERE PNPDeviceID LIKE 'PCI%VEN_" + vendorId + "%'", rows);
    return rows > 0;
}

Finding FindDxgi()
{
    constexpr GUID factoryId = {0x7B7166EC, 0x21C7, 0x44AE, {0xB2, 0x1A, 0xC9, 0xAE, 0x32, 0x1A, 0xE3, 0x69}};
    Finding finding = FindDll("dxgi.dll");
    if (!finding.IsFound) {
        return finding;
    }
    using Create = HRESULT(WINAPI*)(const GUID&, void**);
    const HMODULE module = ::LoadLibraryA("dxgi.dll");
    const auto create = reinterpret_cast<Create>(reinterpret_cast<void*>(::GetProcAddress(module, "CreateDXGIFactory")));
    ComPtr<IUnknown> factory;
    const HRESULT status = create ? create(factoryId, reinterpret_cast<void**>(factory.GetAddressOf())) : E_NOTIMPL;
    finding.IsFound = SUCCEEDED(status);
    finding.Detail = SUCCEEDED(status) ? "" : Hex(status);
    factory.Reset();
    ::FreeLibrary(module);
    return finding;
}

Finding FindRegistryKey(const std::string& path)
{
    HKEY key = nullptr;
    const LSTATUS status = ::RegOpenKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key);
    if (status != ERROR_SUCCESS) {
        return {false, "error " + std::to_string(status)};
    }
    ::RegCloseKey(key);
    return {true, {}};
}

Finding FindCom()
{
    APTTYPE type = APTTYPE_CURRENT;
    APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
    const HRESULT status = ::CoGetApartmentType(&type, &qualifier);
    return {SUCCEEDED(status), SUCCEEDED(status) ? "" : Hex(status)};
}

} // namespace orvel::tools
