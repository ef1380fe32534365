#include "SystemChecks.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include <windows.h>

#include <objbase.h>
#include <oleauto.h>
#include <wbemidl.h>
#include <winver.h>
#include <wrl/client.h>

namespace orvel::tools {

namespace {

using Microsoft::WRL::ComPtr;

constexpr uint32_t unknownMemoryType = 2; // SMBIOS's own code

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

/// A property of a row as text; "" where the row does not tell it.
std::string TextOf(IWbemClassObject& row, const wchar_t* property)
{
    VARIANT value;
    ::VariantInit(&value);
    std::string text;
    if (SUCCEEDED(row.Get(property, 0, &value, nullptr, nullptr)) &&
        SUCCEEDED(::VariantChangeType(&value, &value, 0, VT_BSTR))) {
        text = ToUtf8(value.bstrVal);
    }
    ::VariantClear(&value);
    return text;
}

/// Runs a query and reads a property of each row.
HRESULT ReadColumn(const std::string& wql, const wchar_t* property, std::vector<std::string>& column)
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
        column.push_back(TextOf(*row.Get(), property));
    }
}

std::string AdaptersOf(const std::string& vendorId)
{
    return "SELECT * FROM Win32_VideoController WHERE PNPDeviceID LIKE 'PCI%VEN_" + vendorId + "%'";
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
    std::vector<std::string> rows;
    const HRESULT status = ReadColumn("SELECT * FROM " + name, L"Name", rows);
    const std::string count = std::to_string(rows.size()) + (rows.size() == 1 ? " row" : " rows");
    return {SUCCEEDED(status), SUCCEEDED(status) ? count : Hex(status)};
}

std::vector<std::string> NamesOfAdapters(const std::string& vendorId)
{
    std::vector<std::string> names;
    ReadColumn(AdaptersOf(vendorId), L"Name", names);
    return names;
}

uint32_t MemoryType()
{
    std::vector<std::string> types;
    ReadColumn("SELECT SMBIOSMemoryType FROM Win32_PhysicalMemory", L"SMBIOSMemoryType", types);
    const auto told = std::find_if(types.begin(), types.end(), [](const std::string& type) { return type != "0"; });
    const unsigned long type = told == types.end() ? 0 : std::strtoul(told->c_str(), nullptr, 10);
    return type == 0 ? unknownMemoryType : static_cast<uint32_t>(type);
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
